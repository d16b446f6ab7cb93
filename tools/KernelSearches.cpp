#include "KernelSearches.h"

#include "hosts/command/blind/BlindKernel.h"
#include "hosts/command/terminal/Failure.h"
#include "restoration/blind/findKernel.h"
#include "restoration/failures/Failure.h"

#include <algorithm>

namespace velorn::tools {
namespace {

constexpr float kLeastConfidence = 0.5f;

restoration::Plane luminanceOf(const RgbPixels& pixels) {
    const auto& samples = std::get<std::vector<std::uint8_t>>(pixels.samples);
    restoration::Plane plane(pixels.width, pixels.height);
    for (int y = 0; y < pixels.height; ++y) {
        for (int x = 0; x < pixels.width; ++x) {
            const std::uint8_t* pixel = samples.data() + pixels.sampleIndex(x, y);
            plane.row(y)[x] =
                (0.299f * static_cast<float>(pixel[0]) + 0.587f * static_cast<float>(pixel[1]) +
                 0.114f * static_cast<float>(pixel[2])) /
                255.0f;
        }
    }
    return plane;
}

} // namespace

std::optional<SearchResult> earlierSearch(const RgbPixels& pixels, int side) {
    BlindSettings settings;
    settings.size = {std::clamp(side, 3, kLargestEstimatedSide),
                     std::clamp(side, 3, kLargestEstimatedSide)};
    try {
        const auto found = findKernel(pixels, settings, [](int, int) { return true; });
        return SearchResult{found->kernel, found->isHelpful};
    } catch (const Failure&) {
        return std::nullopt;
    }
}

std::optional<SearchResult> librarySearch(const RgbPixels& pixels) {
    try {
        restoration::Team team(1, {});
        const auto found = restoration::findKernel(luminanceOf(pixels), {}, team);
        return SearchResult{
            BlurKernel{found.kernel.width, found.kernel.height, found.kernel.values},
            found.confidence >= kLeastConfidence};
    } catch (const restoration::Failure&) {
        return std::nullopt;
    }
}

} // namespace velorn::tools
