#pragma once

#include "velimproclib/primitives/base/canCallBack.h"
#include "velimproclib/primitives/base/narrowToInt32.h"
#include "velorncore10.h"

#include <algorithm>
#include <cstdint>

namespace vel {

/// Sets `current` to `value`, at most `limit`, and calls the host back if it can.
/// @return false if the callback was made and asks for cancellation
inline bool notifyProgress(ProgressRecord& progress, std::int64_t value) {
    progress.current = std::min(narrowToInt32(value), progress.limit);
    if (!canCallBack(progress)) {
        return true;
    }
    return progress.callback(progress.current, progress.limit, progress.userData) != 0;
}

} // namespace vel
