#include "hosts/command/kernels/KernelPicture.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velorn {
namespace {

constexpr int kMaxPlaces = 31;
constexpr std::array<const char*, 5> kShades{"  ", "░░", "▒▒", "▓▓", "██"};

/// The sums of squares of `side` by `side` weights. The last squares of a row or column may be
/// smaller.
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

/// How far a weight, on the scale of the shades, exceeds a shade before the next one is used.
/// Weights up to a fortieth of the largest are therefore blank.
constexpr float kTolerance = 0.1f;

const char* shadeOf(float share) {
    const float last = static_cast<float>(kShades.size() - 1);
    const float place = std::ceil(std::clamp(share, 0.0f, 1.0f) * last - kTolerance);
    return kShades[static_cast<std::size_t>(std::max(place, 0.0f))];
}

} // namespace

std::string kernelPicture(const BlurKernel& kernel) {
    const BlurKernel shown = binned(kernel, (kernel.largerSide() + kMaxPlaces - 1) / kMaxPlaces);
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
