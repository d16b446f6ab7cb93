#include "velimproclib/catalogue/arithmetic/PlanePairs.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <cstddef>
#include <functional>

namespace vel {
namespace {

template <class Operation>
Status combine(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep, float* dst,
               std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({a, b, dst}, {w, h}, {aStep, bStep, dstStep})) {
        return status;
    }
    for (std::size_t y = 0; y < static_cast<std::size_t>(h); ++y) {
        const auto* aRow = rowAt(unaligned(a), aStep, y);
        const auto* bRow = rowAt(unaligned(b), bStep, y);
        auto* dstRow = rowAt(unaligned(dst), dstStep, y);
        for (std::size_t x = 0; x < static_cast<std::size_t>(w); ++x) {
            dstRow[x].value = Operation()(aRow[x].value, bRow[x].value);
        }
    }
    return kOk;
}

} // namespace

Status addPlanesF32(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                    float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return combine<std::plus<float>>(a, aStep, b, bStep, dst, dstStep, w, h);
}

Status mulPlanesF32(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                    float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return combine<std::multiplies<float>>(a, aStep, b, bStep, dst, dstStep, w, h);
}

} // namespace vel
