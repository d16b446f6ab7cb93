#include "velimproclib/primitives/arithmetic/AbsoluteDifference.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/arithmetic/AbsoluteDifference.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

void absDiffRows(const std::uint8_t* a, std::int32_t aStep, const std::uint8_t* b,
                 std::int32_t bStep, std::uint8_t* dst, std::int32_t dstStep, Extent extent) {
    for (std::size_t y = 0; y < extent.rows; ++y) {
        const std::uint8_t* aRow = rowAt(a, aStep, y);
        const std::uint8_t* bRow = rowAt(b, bStep, y);
        std::uint8_t* dstRow = rowAt(dst, dstStep, y);
        for (std::size_t x = 0; x < extent.columns; ++x) {
            const std::uint8_t larger = aRow[x] > bRow[x] ? aRow[x] : bRow[x];
            const std::uint8_t smaller = aRow[x] > bRow[x] ? bRow[x] : aRow[x];
            dstRow[x] = static_cast<std::uint8_t>(larger - smaller);
        }
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(absDiffRows);

} // namespace

Status absDiffU8(const std::uint8_t* a, std::int32_t aStep, const std::uint8_t* b,
                 std::int32_t bStep, std::uint8_t* dst, std::int32_t dstStep, std::int32_t w,
                 std::int32_t h) noexcept {
    if (const Status status = checkArguments({a, b, dst}, {w, h}, {aStep, bStep, dstStep})) {
        return status;
    }
    const Extent extent = joinAdjacentRows(w, h, {{aStep, 1}, {bStep, 1}, {dstStep, 1}});
    HWY_DYNAMIC_DISPATCH(absDiffRows)(a, aStep, b, bStep, dst, dstStep, extent);
    return kOk;
}

} // namespace vel
#endif
