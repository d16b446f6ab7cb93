#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "restoration/chroma/gradientRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "restoration/chroma/gradientRows.h"

HWY_BEFORE_NAMESPACE();
namespace restoration::HWY_NAMESPACE {
namespace {

constexpr float kLeast = 1e-30f; // keeps 0 / 0 out
constexpr float kMost = 1e30f;   // keeps infinity / infinity out

HWY_INLINE float energyOf(float here, float right, float below) {
    const float gx = right - here;
    const float gy = below - here;
    return gx * gx + gy * gy;
}

/// The sum of a column of energies.
HWY_INLINE float columnSum(const float* above, const float* here, const float* below,
                           std::size_t i) {
    return (above[i] + here[i]) + below[i];
}

HWY_INLINE float gainOf(float left, float middle, float right, float noise) {
    const float all = (left + middle) + right;
    const float sum = all < kMost ? all : kMost;
    return sum / (sum + noise);
}

} // namespace

void energyLanes(const float* HWY_RESTRICT row, const float* HWY_RESTRICT below,
                 float* HWY_RESTRICT energy, std::size_t count) {
    for (std::size_t i = 0; i + 1 < count; ++i) {
        energy[i] = energyOf(row[i], row[i + 1], below[i]);
    }
    energy[count - 1] = energyOf(row[count - 1], row[0], below[count - 1]);
}

void gainLanes(const float* HWY_RESTRICT above, const float* HWY_RESTRICT here,
               const float* HWY_RESTRICT below, float noise, float* HWY_RESTRICT gain,
               std::size_t count) {
    const float total = 9 * noise + kLeast;
    const std::size_t last = count - 1;
    const auto sum = [=](std::size_t i) { return columnSum(above, here, below, i); };
    gain[0] = gainOf(sum(last), sum(0), sum(1), total);
    for (std::size_t i = 1; i < last; ++i) {
        gain[i] = gainOf(sum(i - 1), sum(i), sum(i + 1), total);
    }
    gain[last] = gainOf(sum(last - 1), sum(last), sum(0), total);
}

void scaledGradientLanes(const float* HWY_RESTRICT row, const float* HWY_RESTRICT below,
                         const float* HWY_RESTRICT gain, float* HWY_RESTRICT wx,
                         float* HWY_RESTRICT wy, std::size_t count) {
    for (std::size_t i = 0; i + 1 < count; ++i) {
        wx[i] = gain[i] * (row[i + 1] - row[i]);
    }
    wx[count - 1] = gain[count - 1] * (row[0] - row[count - 1]);
    for (std::size_t i = 0; i < count; ++i) {
        wy[i] = gain[i] * (below[i] - row[i]);
    }
}

} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace restoration {

HWY_EXPORT(energyLanes);
HWY_EXPORT(gainLanes);
HWY_EXPORT(scaledGradientLanes);

void gradientEnergy(const float* row, const float* below, float* energy,
                    std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(energyLanes)(row, below, energy, count);
}

void gradientGain(const float* energyAbove, const float* energy, const float* energyBelow,
                  float noise, float* gain, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(gainLanes)(energyAbove, energy, energyBelow, noise, gain, count);
}

void scaledGradient(const float* row, const float* below, const float* gain, float* wx, float* wy,
                    std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(scaledGradientLanes)(row, below, gain, wx, wy, count);
}

} // namespace restoration
#endif
