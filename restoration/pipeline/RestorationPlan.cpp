#include "restoration/pipeline/RestorationPlan.h"

#include "restoration/secondpass/measureBehindBlur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

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

/// Whether the kernel blurs nothing.
bool isPoint(const Kernel& kernel) noexcept {
    constexpr float kNearlyAll = 0.999f;
    return kernel.at(kernel.height / 2, kernel.width / 2) > kNearlyAll;
}

double middleOf(int begin, int end, int length) noexcept {
    return (static_cast<double>(begin) + end) / 2.0 / length;
}

} // namespace

RestorationPlan::RestorationPlan(const TileLoader& tileLoader, const PictureBlur& pictureBlur,
                                 const Choices& chosen, const VelornRestoreSettings& hostSettings)
    : loader(tileLoader), blur(pictureBlur), choices(chosen), settings(hostSettings) {
    if (isDeconvolved() && settings.quality != VELORN_QUALITY_FAST) {
        measureNoises();
    }
    if (blur.grid() == nullptr) {
        model = modelOf(blur.kernels());
        model.share = choices.share;
    }
}

TileModel RestorationPlan::localModel(const PlannedTile& tile) const {
    const Rect kept = tile.kept();
    const Kernel kernel =
        blur.grid()->interpolated(middleOf(kept.x, kept.right(), loader.picture().width()),
                                  middleOf(kept.y, kept.bottom(), loader.picture().height()));
    if (isPoint(kernel)) {
        return {};
    }
    const Kernel* const kernels[] = {&kernel};
    TileModel local = modelOf(kernels);
    if (settings.strength < 0.0f) {
        local.share = kernel.trust.share;
    }
    return local;
}

TileModel RestorationPlan::modelOf(std::span<const Kernel* const> kernels) const {
    TileModel made;
    for (const Kernel* kernel : kernels) {
        made.blurs.emplace_back(*kernel, loader.side());
    }
    const bool hasChroma = loader.rules().layout == PlaneLayout::LuminanceChroma;
    for (std::size_t i = 0; i < m_noises.size(); ++i) {
        const bool isQuick = settings.quality != VELORN_QUALITY_BEST || (hasChroma && i > 0);
        made.secondPasses.emplace_back(*kernels[kernels.size() > 1 ? i : 0], m_noises[i],
                                       isQuick ? SecondPass::Effort::Quick
                                               : SecondPass::Effort::Full);
    }
    return made;
}

/// The noise that counts for a second pass is that at the frequencies which it amplifies. The eye
/// sees less of chroma.
void RestorationPlan::measureNoises() {
    const bool hasChroma = loader.rules().layout == PlaneLayout::LuminanceChroma;
    const std::vector<Patch> patches = noisePatches(loader);
    const auto colours = static_cast<std::size_t>(loader.picture().colours());
    const std::size_t planes = hasChroma && settings.quality != VELORN_QUALITY_BEST ? 1 : colours;
    const std::span<const Kernel* const> kernels = blur.kernels();
    for (std::size_t i = 0; i < planes; ++i) {
        m_noises.push_back(noiseOf(i, patches, *kernels[kernels.size() > 1 ? i : 0]));
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
    noise.deviation = measuredNoise(i, patches, kernel).value_or(noise.deviation);
    return noise;
}

/// The noise behind the blur. Where the blur differs from place to place, each patch is measured
/// behind its own, and the median counts: a kernel that does not fit takes the picture for noise.
std::optional<float> RestorationPlan::measuredNoise(std::size_t i,
                                                    const std::vector<Patch>& patches,
                                                    const Kernel& kernel) const {
    if (blur.grid() == nullptr) {
        return measureBehindBlur(patches, i, kernel);
    }
    std::vector<float> noises;
    for (const Patch& patch : patches) {
        const Kernel local = blur.grid()->interpolated(
            middleOf(patch.kept.x, patch.kept.right(), loader.picture().width()),
            middleOf(patch.kept.y, patch.kept.bottom(), loader.picture().height()));
        if (const auto noise = measureBehindBlur({&patch, 1}, i, local)) {
            noises.push_back(*noise);
        }
    }
    if (noises.empty()) {
        return std::nullopt;
    }
    const auto middle = noises.begin() + static_cast<std::ptrdiff_t>(noises.size() / 2);
    std::ranges::nth_element(noises, middle);
    return *middle;
}

} // namespace restoration
