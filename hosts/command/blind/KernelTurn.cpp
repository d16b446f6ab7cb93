#include "hosts/command/blind/KernelTurn.h"

#include "hosts/command/blind/RestorationMeasure.h"

#include <algorithm>

namespace velorn {
namespace {

/// A twelfth of what clean pictures are restored with; half and twice as much choose less well.
constexpr float kCalmStrength = 250.0f;

/// `progress` as the half of an account that begins at `start`, 0 or 1.
ProgressFunction halfOf(const ProgressFunction& progress, int start) {
    return [&progress, start](int current, int limit) {
        constexpr int kUnits = 1000;
        const double done = (start + static_cast<double>(current) / limit) / 2.0;
        return progress(static_cast<int>(kUnits * done), kUnits);
    };
}

} // namespace

BlurKernel turnedRound(const BlurKernel& kernel) {
    BlurKernel turned = kernel;
    std::ranges::reverse(turned.weights);
    return turned;
}

std::optional<BlurKernel> betterWayRound(const RgbPixels& pixels, const BlurKernel& kernel,
                                         const ProgressFunction& progress) {
    RestorationSettings calm;
    calm.lambda = kCalmStrength;
    const RgbPixels asItIs = restore(pixels, kernel, calm, halfOf(progress, 0));
    if (asItIs.pixelCount() == 0) {
        return std::nullopt;
    }
    const BlurKernel other = turnedRound(kernel);
    const RgbPixels turned = restore(pixels, other, calm, halfOf(progress, 1));
    if (turned.pixelCount() == 0) {
        return std::nullopt;
    }
    return roughness(turned) < roughness(asItIs) ? other : kernel;
}

} // namespace velorn
