#include "KernelTurn.h"

#include "RestorationMeasure.h"

#include <algorithm>
#include <vector>

namespace velorn {
namespace {

std::vector<BlurKernel> waysRound(const BlurKernel& kernel, Turn turn) {
    switch (turn) {
    case Turn::No:
        return {kernel};
    case Turn::Yes:
        return {turnedRound(kernel)};
    case Turn::Auto:
        break;
    }
    return {kernel, turnedRound(kernel)};
}

} // namespace

BlurKernel turnedRound(const BlurKernel& kernel) {
    BlurKernel turned = kernel;
    std::ranges::reverse(turned.weights);
    return turned;
}

std::optional<KernelTrial> tryWaysRound(const RgbPixels& pixels, const BlurKernel& kernel,
                                        Turn turn, const RestorationSettings& settings,
                                        const ProgressFunction& progress) {
    const std::vector<BlurKernel> ways = waysRound(kernel, turn);
    const int count = static_cast<int>(ways.size());
    std::optional<KernelTrial> best;
    for (int i = 0; i < count; ++i) {
        const BlurKernel& way = ways[static_cast<std::size_t>(i)];
        const RgbPixels result = restore(pixels, way, settings, [&](int current, int limit) {
            constexpr int kUnits = 1000;
            const double done = i + static_cast<double>(current) / limit;
            return progress(static_cast<int>(kUnits * done / count), kUnits);
        });
        if (result.pixelCount() == 0) {
            return std::nullopt;
        }
        const double found = unsharpness(result);
        if (!best || found < best->unsharpness) {
            best = KernelTrial{way, found};
        }
    }
    return best;
}

} // namespace velorn
