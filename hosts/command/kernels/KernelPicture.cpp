#include "hosts/command/kernels/KernelPicture.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velorn {
namespace {

constexpr int kMostPlaces = 31;
constexpr std::array<const char*, 5> kShades{"  ", "░░", "▒▒", "▓▓", "██"};

/// The kernel with squares of `side` weights added up to one; the last squares may be cut.
BlurKernel binned(const BlurKernel& kernel, int side) {
    BlurKernel result{(kernel.width + side - 1) / side, (kernel.height + side - 1) / side, {}};
    result.weights.resize(static_cast<std::size_t>(result.width) *
                          static_cast<std::size_t>(result.height));
    for (int r = 0; r < kernel.height; ++r) {
        for (int c = 0; c < kernel.width; ++c) {
            result.weights[static_cast<std::size_t>(r / side) *
                               static_cast<std::size_t>(result.width) +
                           static_cast<std::size_t>(c / side)] += kernel.at(r, c);
        }
    }
    return result;
}

/// What a shade must be passed by before the next begins: weights up to a fortieth of the peak are
/// blank.
constexpr float kBlank = 0.1f;

const char* shadeOf(float share) {
    const float last = static_cast<float>(kShades.size() - 1);
    const float place = std::ceil(std::clamp(share, 0.0f, 1.0f) * last - kBlank);
    return kShades[static_cast<std::size_t>(std::max(place, 0.0f))];
}

} // namespace

std::string kernelPicture(const BlurKernel& kernel) {
    const BlurKernel shown = binned(kernel, (kernel.largerSide() + kMostPlaces - 1) / kMostPlaces);
    const float peak = std::ranges::max(shown.weights);
    std::string text;
    for (int r = 0; r < shown.height; ++r) {
        for (int c = 0; c < shown.width; ++c) {
            text += peak > 0.0f ? shadeOf(shown.at(r, c) / peak) : kShades.front();
        }
        text += '\n';
    }
    return text;
}

} // namespace velorn
