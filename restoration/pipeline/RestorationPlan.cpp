#include "restoration/pipeline/RestorationPlan.h"

#include "restoration/secondpass/measureBehindBlur.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>

namespace restoration {
namespace {

/// The mean of a plane over the patches.
double meanOf(const std::vector<Patch>& patches, std::size_t plane) {
    double sum = 0;
    double count = 0;
    for (const Patch& patch : patches) {
        for (int y = 0; y < patch.kept.height; ++y) {
            const float* row =
                patch.tile.planes[plane].row(patch.kept.y - patch.tile.window.y + y) +
                patch.kept.x - patch.tile.window.x;
            for (int x = 0; x < patch.kept.width; ++x) {
                sum += static_cast<double>(row[x]);
                ++count;
            }
        }
    }
    return count > 0 ? sum / count : 0;
}

/// The share of the noise of a restored pixel that does not depend on the pixel: deconvolution
/// spreads noise from bright to dark parts.
constexpr double kSpread = 0.5;

/// The variance in light of noise that has variance 1 in display values, approximately
/// base + slope v at the light v: the square of the slope of the tone curve.
struct LightNoise {
    explicit LightNoise(const ToneCurve& curve) {
        constexpr float kDark = 0.1f; // display value that stands for black, where noise is clipped
        base = std::pow(static_cast<double>(curve.slope(kDark)), 2);
        slope = std::pow(static_cast<double>(curve.slope(1.0f)), 2) - base;
    }

    double base;
    double slope;
};

} // namespace

/// The noise that counts for a second pass is that at the frequencies which it amplifies. The eye
/// sees less of chroma.
void RestorationPlan::planSecondPasses(std::span<const Kernel* const> kernels) {
    if (kernels.empty()) {
        return;
    }
    const bool hasChroma = loader.rules().layout == PlaneLayout::LuminanceChroma;
    const std::vector<Patch> patches = noisePatches(loader);
    const bool isBest = settings.quality == VELORN_QUALITY_BEST;
    const auto colours = static_cast<std::size_t>(loader.picture().colours());
    const std::size_t planes = hasChroma && !isBest ? 1 : colours;
    for (std::size_t i = 0; i < planes; ++i) {
        const Kernel& kernel = *kernels[kernels.size() > 1 ? i : 0];
        const bool isQuick = !isBest || (hasChroma && i > 0);
        secondPasses.emplace_back(kernel, noiseOf(i, patches, kernel),
                                  isQuick ? SecondPass::Effort::Quick : SecondPass::Effort::Full);
    }
}

/// The noise of plane `i` of the tiles. It is measured even where the host gives the noise: that
/// guides the automatic settings, and values of a report must give the result of the report.
SecondPass::Noise RestorationPlan::noiseOf(std::size_t i, const std::vector<Patch>& patches,
                                           const Kernel& kernel) const {
    const bool hasChroma = loader.rules().layout == PlaneLayout::LuminanceChroma;
    const NoiseLevels& levels = choices.noise;
    const std::array<float, 4> display =
        hasChroma || loader.picture().colours() == 1
            ? std::array{levels.luminance, levels.chromaBlue, levels.chromaRed, 0.0f}
            : levels.channels;
    SecondPass::Noise noise{display[i]};
    if (const ToneCurves* light = loader.rules().light) {
        const LightNoise inLight(light->of(hasChroma ? 1 : i));
        const double mean = inLight.base + inLight.slope * meanOf(patches, hasChroma ? 0 : i);
        noise.deviation *= static_cast<float>(std::sqrt(std::max(mean, inLight.base)));
        if (mean > 0 && !(hasChroma && i > 0)) {
            noise.base = static_cast<float>(kSpread + (1 - kSpread) * inLight.base / mean);
            noise.slope = static_cast<float>((1 - kSpread) * inLight.slope / mean);
        }
    }
    noise.deviation = measureBehindBlur(patches, i, kernel).value_or(noise.deviation);
    return noise;
}

} // namespace restoration
