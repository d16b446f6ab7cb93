#include "restoration/deconvolution/taperEdges.h"

#include "restoration/deconvolution/blurPlane.h"

#include <algorithm>
#include <cstddef>

namespace restoration {
namespace {

/// The share of the plane at `position` of an axis of the window: 0 in the ring, 1 from `reach`
/// pixels inside the window on.
float shareOfPlane(int position, int length, int reach) {
    const int distance = std::clamp(std::min(position, length - 1 - position) + 1, 0, reach);
    const float t = static_cast<float>(distance) / static_cast<float>(reach);
    return t * t * (3.0f - 2.0f * t);
}

} // namespace

void taperEdges(Plane& y, int width, int height, const BlurSpectrum& blur, TileScratch& scratch,
                const Cancellation& cancellation) {
    Plane& blurred = scratch.plane(0);
    blurPlane(y, blur, blurred, scratch, cancellation);
    const int reach = blur.kernelSide() / 2 + 2;
    float* columnShares = scratch.rows(1);
    for (int x = 0; x < blur.side(); ++x) {
        columnShares[x] = shareOfPlane(x, width, reach);
    }
    for (int row = 0; row < blur.side(); ++row) {
        const float rowShare = shareOfPlane(row, height, reach);
        const float* other = blurred.row(row);
        float* pixels = y.row(row);
        for (int x = 0; x < blur.side(); ++x) {
            const float share = rowShare * columnShares[x];
            pixels[x] = share < 1.0f ? other[x] + share * (pixels[x] - other[x]) : pixels[x];
        }
    }
}

} // namespace restoration
