#include "hosts/command/blind/KernelOrientation.h"

#include "hosts/command/blind/RestorationMeasures.h"
#include "hosts/command/restoration/Restoration.h"

namespace velorn {
namespace {

/// A twelfth of the largest strength with a found kernel. Half and twice as much choose less well.
constexpr float kComparedStrength = 250.0f;

} // namespace

std::optional<BlurKernel> betterOrientation(const RgbPixels& pixels, const BlurKernel& kernel,
                                            const ProgressFunction& progress) {
    RestorationSettings settings;
    settings.lambda = kComparedStrength;
    const BlurKernel rotated = rotatedBy180(kernel);
    const RgbPixels asItIs = restore(pixels, kernel, settings, partOf(progress, 0.0, 0.5));
    if (asItIs.pixelCount() == 0) {
        return std::nullopt;
    }
    const RgbPixels turned = restore(pixels, rotated, settings, partOf(progress, 0.5, 1.0));
    if (turned.pixelCount() == 0) {
        return std::nullopt;
    }
    return roughness(turned) < roughness(asItIs) ? rotated : kernel;
}

} // namespace velorn
