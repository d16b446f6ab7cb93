#pragma once

#include "velimproclib/primitives/base/narrowToInt32.h"
#include "velorncore10.h"

#include <algorithm>
#include <cstdint>

namespace vel {

/// Sets `current` to `value`, at most `limit`, and calls the host back if both callback and user
/// data are set.
/// @return false if the callback was made and asks for cancellation
inline bool notifyProgress(ProgressRecord& progress, std::int64_t value) {
    progress.current = std::min(narrowToInt32(value), progress.limit);
    if (progress.callback == nullptr || progress.userData == nullptr) {
        return true;
    }
    return progress.callback(progress.current, progress.limit, progress.userData) != 0;
}

} // namespace vel
