#include "restoration/pictures/luminancePlane.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace restoration {
namespace {

std::array<float, 4> weightsOf(int colours) noexcept {
    if (colours == 3) {
        return {0.299f, 0.587f, 0.114f, 0.0f};
    }
    std::array<float, 4> weights{};
    std::fill_n(weights.begin(), colours, 1.0f / static_cast<float>(colours));
    return weights;
}

void addScaled(const std::vector<float>& samples, float weight, float* sums) noexcept {
    for (std::size_t x = 0; x < samples.size(); ++x) {
        sums[x] += weight * samples[x];
    }
}

} // namespace

Plane luminancePlane(const PictureReader& picture, Team& team) {
    constexpr int kBandRows = 32;
    const int width = picture.width();
    const int height = picture.height();
    const std::array<float, 4> weights = weightsOf(picture.colours());
    Plane luminance(width, height);
    const auto bands = static_cast<std::size_t>((height + kBandRows - 1) / kBandRows);
    team.forEach(bands, [&](std::size_t band, int) {
        std::vector<float> samples(static_cast<std::size_t>(width));
        const int first = static_cast<int>(band) * kBandRows;
        for (int y = first; y < std::min(first + kBandRows, height); ++y) {
            std::fill_n(luminance.row(y), width, 0.0f);
            for (int colour = 0; colour < picture.colours(); ++colour) {
                picture.readChannel(colour, y, 0, width, samples.data());
                addScaled(samples, weights[static_cast<std::size_t>(colour)], luminance.row(y));
            }
        }
    });
    return luminance;
}

} // namespace restoration
