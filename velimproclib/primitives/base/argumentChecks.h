#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>
#include <initializer_list>

namespace vel {

/// The checks that open every primitive, in their fixed order: pointers, then sizes, then steps.
/// A null pointer gives `kNullPointer`, a width, height or length below 1 `kBadSize`, a step below
/// 1 `kBadStep`; the first complaint wins.
///
/// A step is not held against the length of a row: callers pass pointers that are moved to a
/// channel or into a region, and the step of a single row is never used. Operations on
/// neighbourhoods check more, see neighbourhoods.h.
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
