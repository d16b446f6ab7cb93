#pragma once

#include "velorn.h"

#include <cstdint>

namespace restoration {

/// The host's progress function and its data; the function may be null.
struct HostProgress {
    VelornProgress function = nullptr;
    void* userData = nullptr;

    /// @return whether the host wants the call to continue
    bool report(double done) const { return function == nullptr || function(done, userData) != 0; }
};

} // namespace restoration
