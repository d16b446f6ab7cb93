#include "BlindKernel.h"

#include "DefaultStrength.h"
#include "Failure.h"
#include "RestorationMeasure.h"
#include "TexturedCrop.h"
#include "TileLimit.h"

#include <algorithm>
#include <string>

namespace velorn {
namespace {

/// The side of the part that is looked at.
constexpr int kCropSide = 512;
/// What the estimate takes of the bar, in percent; the restorations both ways take the rest.
constexpr int kEstimateShare = 70;

std::string sidesOf(KernelSize size) {
    return std::to_string(size.width) + " by " + std::to_string(size.height);
}

void checkFits(const RgbPixels& pixels, KernelSize size) {
    const int largest = largestKernelSide(pixels.width, pixels.height);
    if (size.largerSide() > largest) {
        throw Failure("a kernel of " + sidesOf(size) +
                      " is too large for this picture, which takes " + std::to_string(largest) +
                      " by " + std::to_string(largest) + " at most");
    }
}

} // namespace

float blindStrength(double noiseLevel) {
    constexpr float kStrongest = 3000.0f;
    return std::min(defaultStrength(noiseLevel), kStrongest);
}

BlindKernel findKernel(const RgbPixels& pixels, const BlindSettings& settings,
                       const RestorationSettings& restoration, const Interrupt& interrupt,
                       ProgressBar& bar) {
    checkFits(pixels, settings.size);
    const RgbPixels part = texturedCrop(pixels, kCropSide);
    const auto showFrom = [&bar](int start, int share) {
        return [&bar, start, share](int current, int limit) {
            bar.show(start + static_cast<int>(static_cast<double>(share) * current / limit), 100);
        };
    };
    const auto showEstimate = showFrom(0, kEstimateShare);
    const std::optional<BlurKernel> estimated =
        estimateKernel(part, settings.size, settings.strength, [&](int current, int limit) {
            showEstimate(current, limit);
            return true;
        });
    interrupt.check();
    if (!estimated) {
        throw Failure("the picture has too few edges to find a kernel of " +
                      sidesOf(settings.size) + " in it");
    }
    const auto showTrials = showFrom(kEstimateShare, 100 - kEstimateShare);
    const std::optional<KernelTrial> trial =
        tryWaysRound(part, *estimated, settings.turn, restoration, [&](int current, int limit) {
            showTrials(current, limit);
            return !interrupt.isRequested();
        });
    interrupt.check();
    return {trial.value().kernel, trial->unsharpness < unsharpness(part)};
}

} // namespace velorn
