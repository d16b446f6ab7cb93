#include "restoration/strength/FitProbe.h"

#include "restoration/deconvolution/blurPlane.h"
#include "restoration/deconvolution/estimateUnknown.h"
#include "restoration/strength/fitRows.h"
#include "restoration/strength/RandomSigns.h"

#include <algorithm>

namespace restoration {
namespace {

constexpr float kLevel = 1.0f / 255.0f;
constexpr float kDisturbance = 0.5f * kLevel;

/// blurred = k * f(y); may be `y`.
void restoreAndBlur(Plane& y, const BlurSpectrum& blur, const HyperLaplacian& prior,
                    ProbeScratch& scratch, Plane& blurred, const Cancellation& cancellation) {
    deconvolveHyperLaplacian(y, nullptr, blur, prior, scratch.restored, scratch.tile, cancellation);
    blurPlane(scratch.restored, blur, blurred, scratch.tile, cancellation);
}

double dotPlanes(const Plane& a, const Plane& b) {
    double sum = 0.0;
    for (int row = 0; row < a.height(); ++row) {
        sum += dotRow(a.row(row), b.row(row), static_cast<std::size_t>(a.width()));
    }
    return sum;
}

} // namespace

FitProbe::FitProbe(const Patch& patch, std::size_t plane, const Model& model, std::uint64_t seed,
                   ProbeScratch& scratch, const Cancellation& cancellation)
    : m_model(model), m_y(model.blur.side(), model.blur.side()),
      m_signs(model.blur.side(), model.blur.side()),
      m_weightedSigns(model.blur.side(), model.blur.side()) {
    std::ranges::copy(patch.tile.planes[plane].values(), m_y.values().begin());
    drawSigns(patch, seed);
    if (m_pixels > 0) {
        estimateUnknown(m_y, patch.tile.known, model.blur, scratch.tile, cancellation);
        model.weights.apply(m_signs, m_weightedSigns, scratch.tile, cancellation);
        m_scale = dotPlanes(m_signs, m_weightedSigns) / static_cast<double>(m_pixels);
    }
}

void FitProbe::drawSigns(const Patch& patch, std::uint64_t seed) {
    std::ranges::fill(m_signs.values(), 0.0f);
    RandomSigns signs(seed);
    const Rect& window = patch.tile.window;
    const Rect kept = intersection(patch.kept, window);
    for (int y = kept.y - window.y; y < kept.bottom() - window.y; ++y) {
        const std::uint8_t* known = patch.tile.known.row(y);
        float* row = m_signs.row(y);
        for (int x = kept.x - window.x; x < kept.right() - window.x; ++x) {
            const float sign = signs.next();
            if (known[x] != 0) {
                row[x] = sign;
                ++m_pixels;
            }
        }
    }
}

Fit FitProbe::measure(const HyperLaplacian& prior, ProbeScratch& scratch,
                      const Cancellation& cancellation) {
    if (m_pixels == 0) {
        return {};
    }
    const BlurSpectrum& blur = m_model.blur;
    const auto side = static_cast<std::size_t>(blur.side());
    restoreAndBlur(m_y, blur, prior, scratch, scratch.blurred, cancellation);
    for (int row = 0; row < blur.side(); ++row) {
        disturbRow(m_y.row(row), m_signs.row(row), kDisturbance, scratch.disturbed.row(row), side);
    }
    restoreAndBlur(scratch.disturbed, blur, prior, scratch, scratch.disturbed, cancellation);

    Plane& difference = scratch.restored;
    subtractKept(scratch.disturbed, scratch.blurred, difference);
    const double change = dotPlanes(difference, m_weightedSigns);
    subtractKept(m_y, scratch.blurred, difference);
    m_model.weights.apply(difference, scratch.disturbed, scratch.tile, cancellation);
    const double residual = dotPlanes(difference, scratch.disturbed);

    constexpr auto kLevels = 1.0 / static_cast<double>(kLevel);
    return {m_pixels, residual * kLevels * kLevels / m_scale,
            change / (static_cast<double>(kDisturbance) * m_scale)};
}

void FitProbe::subtractKept(const Plane& a, const Plane& b, Plane& difference) const {
    for (int row = 0; row < a.height(); ++row) {
        restoration::subtractKept(a.row(row), b.row(row), m_signs.row(row), difference.row(row),
                                  static_cast<std::size_t>(a.width()));
    }
}

} // namespace restoration
