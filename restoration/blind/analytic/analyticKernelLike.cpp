#include "restoration/blind/analytic/analyticKernelLike.h"

#include "restoration/blind/squares/likeness.h"
#include "restoration/blind/squares/Spread.h"
#include "restoration/blind/squares/squareKernelOf.h"
#include "restoration/kernels/analyticKernel.h"

#include <algorithm>
#include <cmath>

namespace restoration {
namespace {

constexpr double kLeastLikeness = 0.85;
constexpr float kShortest = 0.3f;

/// An analytic blur and its likeness with the kernel found.
struct Fit {
    VelornBlur blur = VELORN_BLUR_GAUSSIAN;
    float extent = kShortest;
    float angle = 0.0f;
    double likeness = 0.0;

    SquareKernel kernel() const {
        const Kernel analytic = analyticKernel(blur, extent, angle);
        return squareKernelOf(analytic, analytic.largerSide());
    }

    KernelKind kind() const {
        switch (blur) {
        case VELORN_BLUR_GAUSSIAN:
            return {KernelKind::Shape::Gaussian, extent, 0.0f};
        case VELORN_BLUR_DISC:
            return {KernelKind::Shape::Disc, extent, 0.0f};
        case VELORN_BLUR_MOTION:
            break;
        }
        return {KernelKind::Shape::Motion, extent, undirectedAngle(angle)};
    }
};

/// The most similar kernel among extents of 0.6 to 1.25 times that of `start`, and angles nearby.
Fit refined(const Fit& start, const SquareKernel& found) {
    Fit best;
    const std::vector<float> turns = start.blur == VELORN_BLUR_MOTION
                                         ? std::vector{-6.0f, -3.0f, 0.0f, 3.0f, 6.0f}
                                         : std::vector{0.0f};
    for (const float turn : turns) {
        for (float factor = 0.6f; factor < 1.26f; factor += 0.05f) {
            Fit fit = start;
            fit.extent = std::max(start.extent * factor, kShortest);
            fit.angle += turn;
            fit.likeness = likenessNearby(found, fit.kernel());
            if (fit.likeness > best.likeness) {
                best = fit;
            }
        }
    }
    return best;
}

} // namespace

std::optional<AnalyticKernel> analyticKernelLike(const SquareKernel& found) {
    const Spread spread(found);
    const auto radius = static_cast<float>(std::sqrt(spread.mean()));
    const auto length = static_cast<float>(std::sqrt(12.0 * spread.largest()));
    Fit best;
    for (const Fit& start :
         {Fit{VELORN_BLUR_GAUSSIAN, radius}, Fit{VELORN_BLUR_DISC, 2.0f * radius},
          Fit{VELORN_BLUR_MOTION, length, static_cast<float>(spread.degrees())}}) {
        const Fit fit = refined(start, found);
        if (fit.likeness > best.likeness) {
            best = fit;
        }
    }
    if (best.likeness < kLeastLikeness) {
        return std::nullopt;
    }
    return AnalyticKernel{best.kind(), best.kernel()};
}

} // namespace restoration
