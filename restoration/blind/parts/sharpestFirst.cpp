#include "restoration/blind/parts/sharpestFirst.h"

#include "restoration/blind/parts/EdgeSpectrum.h"
#include "restoration/blind/parts/usablePart.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace restoration {
namespace {

/// Less difference between variances comes from the content.
constexpr double kClearlySharper = 0.15;

double blurOf(const Plane& luminance, const Rect& part, const Cancellation& cancellation) {
    const EdgeSpectrum edges =
        edgeSpectrum(usablePart(luminance, part, kDisplayRange), cancellation);
    return edges.showsEdges ? edges.blurVariance : std::numeric_limits<double>::infinity();
}

} // namespace

std::vector<Rect> sharpestFirst(const Plane& luminance, std::vector<Rect> parts, Team& team) {
    if (parts.size() < 2) {
        return parts;
    }
    std::vector<double> blurs(parts.size());
    team.forEach(parts.size(), [&](std::size_t piece, int) {
        blurs[piece] = blurOf(luminance, parts[piece], team.cancellation());
    });
    const auto sharpest = std::ranges::min_element(blurs);
    if (*sharpest < blurs.front() - kClearlySharper) {
        const auto found = parts.begin() + (sharpest - blurs.begin());
        std::rotate(parts.begin(), found, found + 1);
    }
    return parts;
}

} // namespace restoration
