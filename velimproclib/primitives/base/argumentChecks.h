#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>
#include <initializer_list>

namespace vel {

/// The check that opens every primitive: pointers, then sizes, then steps. Returns `kNullPointer`
/// for a null pointer, `kBadSize` for a width, height or length below 1, `kBadStep` for a step
/// below 1, and `kOk` when all arguments pass.
///
/// A step is not compared with the length of a row: callers pass pointers to a channel or into a
/// region, and the step of a single row is never used. Operations on neighbourhoods check more, see
/// neighbourhoods.h.
[[nodiscard]] inline Status checkArguments(std::initializer_list<const void*> pointers,
                                           std::initializer_list<std::int32_t> sizes,
                                           std::initializer_list<std::int32_t> steps) noexcept {
    for (const void* pointer : pointers) {
        if (pointer == nullptr) {
            return kNullPointer;
        }
    }
    for (const std::int32_t size : sizes) {
        if (size < 1) {
            return kBadSize;
        }
    }
    for (const std::int32_t step : steps) {
        if (step < 1) {
            return kBadStep;
        }
    }
    return kOk;
}

} // namespace vel
