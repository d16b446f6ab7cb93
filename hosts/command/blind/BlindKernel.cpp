#include "hosts/command/blind/BlindKernel.h"

#include "hosts/command/blind/KernelCentre.h"
#include "hosts/command/blind/KernelSpecks.h"
#include "hosts/command/blind/RestorationMeasures.h"
#include "hosts/command/blind/TexturedCrop.h"
#include "hosts/command/restoration/DefaultStrength.h"
#include "hosts/command/restoration/KernelLimit.h"
#include "hosts/command/restoration/NoiseLevel.h"
#include "hosts/command/restoration/Restoration.h"
#include "hosts/command/terminal/Failure.h"

#include <algorithm>
#include <atomic>

namespace velorn {
namespace {

/// The progress after each step, as a share of the whole.
constexpr double kAfterEstimate = 0.7;
constexpr double kAfterOrientation = 0.9;
/// Restorations with this misfit are as often worse than the picture as better.
constexpr double kMisfitLimit = 0.44;

/// A progress function that remembers cancellation: the estimate ignores it, the next step must
/// not.
class CancellableProgress {
public:
    explicit CancellableProgress(const ProgressFunction& progress)
        : m_function([this, &progress](int current, int limit) {
              if (!progress(current, limit)) {
                  m_isCancelled = true;
              }
              return !m_isCancelled;
          }) {}
    CancellableProgress(const CancellableProgress&) = delete;
    CancellableProgress& operator=(const CancellableProgress&) = delete;

    ProgressFunction part(double start, double end) const { return partOf(m_function, start, end); }
    bool isCancelled() const { return m_isCancelled; }

private:
    std::atomic<bool> m_isCancelled = false;
    ProgressFunction m_function;
};

BlurKernel cleanEstimate(const RgbPixels& pixels, const BlindSettings& settings,
                         const ProgressFunction& progress) {
    const std::optional<BlurKernel> found =
        estimateKernel(pixels, settings.size, settings.strength, progress);
    if (!found) {
        throw Failure("the picture has too few edges to find a kernel of " + settings.size.text());
    }
    return centred(withoutSpecks(*found));
}

std::optional<BlurKernel> oriented(const RgbPixels& pixels, const BlurKernel& kernel, Turn turn,
                                   const ProgressFunction& progress) {
    switch (turn) {
    case Turn::No:
        return kernel;
    case Turn::Yes:
        return rotatedBy180(kernel);
    case Turn::Auto:
        break;
    }
    return betterOrientation(pixels, kernel, progress);
}

/// Whether a restoration with `kernel` helps; nothing when `progress` cancelled.
std::optional<bool> isHelpful(const RgbPixels& pixels, const BlurKernel& kernel,
                              const ProgressFunction& progress) {
    RestorationSettings settings;
    settings.lambda = blindStrength(noiseLevel(pixels));
    const RgbPixels result = restore(pixels, kernel, settings, progress);
    if (result.pixelCount() == 0) {
        return std::nullopt;
    }
    return misfit(pixels, result, kernel) < kMisfitLimit;
}

} // namespace

float blindStrength(double noiseLevel) {
    constexpr float kStrongest = 3000.0f;
    return std::min(defaultStrength(noiseLevel), kStrongest);
}

std::optional<BlindKernel> findKernel(const RgbPixels& pixels, const BlindSettings& settings,
                                      const ProgressFunction& progress) {
    const RgbPixels part = texturedCrop(pixels, settings.partSide);
    checkFits(settings.size, part.width, part.height);
    const CancellableProgress steps(progress);
    const BlurKernel estimate = cleanEstimate(part, settings, steps.part(0.0, kAfterEstimate));
    if (steps.isCancelled()) {
        return std::nullopt;
    }
    const auto kernel =
        oriented(part, estimate, settings.turn, steps.part(kAfterEstimate, kAfterOrientation));
    if (!kernel) {
        return std::nullopt;
    }
    const auto helps = isHelpful(part, *kernel, steps.part(kAfterOrientation, 1.0));
    if (!helps) {
        return std::nullopt;
    }
    return BlindKernel{*kernel, *helps};
}

} // namespace velorn
