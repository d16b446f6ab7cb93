#pragma once

#include "velorncore10.h"

namespace vel {

/// True if `progress` has a callback and user data. Without either, the host is not called back.
inline bool canCallBack(const ProgressRecord& progress) noexcept {
    return progress.callback != nullptr && progress.userData != nullptr;
}

} // namespace vel
