#include "restoration/blind/candidates/KernelScorer.h"

#include "restoration/blind/runs/KernelRun.h"
#include "restoration/blind/runs/LatentGradients.h"
#include "restoration/blind/runs/pyramid.h"
#include "restoration/blind/spectra/SquareTransform.h"
#include "restoration/blind/squares/raggednessOf.h"
#include "restoration/deconvolution/blurPlane.h"
#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/deconvolveHyperLaplacian.h"
#include "restoration/deconvolution/TileScratch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace restoration {
namespace {

constexpr double kLevels = 255.0;
/// Pixels at the rim of the picture that gradients are not taken from, for the sum of their roots.
constexpr int kRim = 12;
/// Pixels beyond the radius of the kernel that residuals are not taken from.
constexpr int kResidualMargin = 4;
constexpr float kEdgeLambda = 1e-3f;
constexpr HyperLaplacian kPrior{3000.0f, 0.5f};

/// The mean of `value(x, y)` over the picture without a margin; 0 for an empty one.
template <class Value>
double meanInside(int width, int height, int margin, const Value& value) {
    double sum = 0.0;
    std::size_t count = 0;
    for (int y = margin; y < height - margin; ++y) {
        double line = 0.0;
        for (int x = margin; x < width - margin; ++x) {
            line += value(x, y);
            ++count;
        }
        sum += line;
    }
    return count == 0 ? 0.0 : sum / static_cast<double>(count);
}

/// The mean square root of the lengths of the forward differences, in levels.
double meanRootOfSteps(const Plane& plane, int width, int height) {
    return meanInside(width - 1, height - 1, kRim, [&](int x, int y) {
        const auto at = [&](int column, int row) {
            return kLevels * static_cast<double>(plane.row(row)[column]);
        };
        const double right = at(x + 1, y) - at(x, y);
        const double down = at(x, y + 1) - at(x, y);
        return std::sqrt(std::sqrt(right * right + down * down));
    });
}

/// The mean of what the values lie below black or above white, in levels.
double meanExcess(const Plane& plane, int width, int height) {
    return meanInside(width - 1, height - 1, kRim, [&](int x, int y) {
        const auto value = static_cast<double>(plane.row(y)[x]);
        return kLevels * (std::max(value - 1.0, 0.0) + std::max(-value, 0.0));
    });
}

Plane copyOf(const Plane& plane) {
    Plane copy(plane.width(), plane.height());
    std::ranges::copy(plane.values(), copy.values().begin());
    return copy;
}

/// The mean squared difference of two planes, in levels, without a margin of the picture.
double meanSquaredDifference(const Plane& first, const Plane& second, int width, int height,
                             int margin) {
    return meanInside(width, height, margin, [&](int x, int y) {
        const double difference = kLevels * static_cast<double>(first.row(y)[x] - second.row(y)[x]);
        return difference * difference;
    });
}

Kernel singlePrecision(const SquareKernel& kernel) {
    return {kernel.side, kernel.side, {kernel.values.begin(), kernel.values.end()}};
}

} // namespace

KernelScorer::KernelScorer(const Plane& picture, int largestRadius, double noise,
                           const Cancellation& cancellation)
    : m_width(picture.width()), m_height(picture.height()), m_noise(noise),
      m_wrapped(wrappedAround(
          picture, transformSide(std::max(picture.width(), picture.height()), largestRadius),
          cancellation)),
      m_spectrum(picture, m_wrapped.height(), noise, cancellation) {}

Evidence KernelScorer::of(const SquareKernel& kernel, const Cancellation& cancellation) const {
    const BlurSpectrum blur(singlePrecision(kernel), side());
    TileScratch scratch(side());
    Plane picture = copyOf(m_wrapped);
    Plane restored(side(), side());
    deconvolveHyperLaplacian(picture, nullptr, blur, kPrior, restored, scratch, cancellation);
    Plane again(side(), side());
    blurPlane(restored, blur, again, scratch, cancellation);
    const double residual = meanSquaredDifference(again, m_wrapped, m_width, m_height,
                                                  kernel.radius() + kResidualMargin);
    const SpectrumFit fit = m_spectrum.fitOf(blur, cancellation);
    Evidence evidence;
    evidence.sparsity = std::log(sparsityOf(restored));
    evidence.edges = std::log(shareOfEdges(kernel, cancellation) + 1e-4);
    evidence.residual = std::log(residual + 0.05);
    evidence.misfit = std::log(residual / (m_noise * m_noise) + 1e-6);
    evidence.unlikelihood = fit.unlikelihood;
    evidence.unevenness = fit.unevenness;
    evidence.excess = std::log(meanExcess(restored, m_width, m_height) + 0.01);
    evidence.raggedness = raggednessOf(kernel);
    return evidence;
}

double KernelScorer::sparsityOf(const Plane& restored) const {
    // Flat pictures have no steps, before and after the restoration.
    constexpr double kLeast = 1e-9;
    return (meanRootOfSteps(restored, m_width, m_height) + kLeast) /
           (meanRootOfSteps(m_wrapped, m_width, m_height) + kLeast);
}

double KernelScorer::shareOfEdges(const SquareKernel& kernel,
                                  const Cancellation& cancellation) const {
    SquareTransform transform(side(), cancellation);
    LatentGradients gradients(transform, copyOf(m_wrapped), m_width, m_height);
    return static_cast<double>(gradients.find(kernel, kEdgeLambda)) /
           (static_cast<double>(m_width) * m_height);
}

} // namespace restoration
