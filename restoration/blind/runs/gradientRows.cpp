#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "restoration/blind/runs/gradientRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "restoration/blind/runs/gradientRows.h"

HWY_BEFORE_NAMESPACE();
namespace restoration::HWY_NAMESPACE {

void gradients(const float* HWY_RESTRICT row, const float* HWY_RESTRICT below, int width,
               float threshold, float* HWY_RESTRICT right, float* HWY_RESTRICT down) {
    const auto keep = [&](int x, float next) {
        const float r = next - row[x];
        const float d = below[x] - row[x];
        const bool isDropped = r * r + d * d < threshold;
        right[x] = isDropped ? 0.0f : r;
        down[x] = isDropped ? 0.0f : d;
    };
    for (int x = 0; x < width - 1; ++x) {
        keep(x, row[x + 1]);
    }
    keep(width - 1, row[0]);
}

void divergences(const float* HWY_RESTRICT right, const float* HWY_RESTRICT down,
                 const float* HWY_RESTRICT downAbove, int width, float* HWY_RESTRICT divergence) {
    divergence[0] = right[width - 1] - right[0] + downAbove[0] - down[0];
    for (int x = 1; x < width; ++x) {
        divergence[x] = right[x - 1] - right[x] + downAbove[x] - down[x];
    }
}

} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace restoration {

HWY_EXPORT(gradients);
HWY_EXPORT(divergences);

void keptGradientRow(const float* row, const float* below, int width, float threshold, float* right,
                     float* down) noexcept {
    HWY_DYNAMIC_DISPATCH(gradients)(row, below, width, threshold, right, down);
}

void divergenceRow(const float* right, const float* down, const float* downAbove, int width,
                   float* divergence) noexcept {
    HWY_DYNAMIC_DISPATCH(divergences)(right, down, downAbove, width, divergence);
}

} // namespace restoration
#endif
