#pragma once

#include "restoration/failures/Failure.h"

#include <atomic>

namespace restoration {

/// The host's wish to end a call, for all threads of the call. Long functions call `check` at least
/// every 50 ms.
class Cancellation {
public:
    void request() noexcept { m_isRequested.store(true, std::memory_order_relaxed); }
    bool isRequested() const noexcept { return m_isRequested.load(std::memory_order_relaxed); }

    /// @throws Failure VELORN_STATUS_CANCELLED after a request
    void check() const {
        if (isRequested()) {
            throw Failure(VELORN_STATUS_CANCELLED, "cancelled");
        }
    }

private:
    std::atomic<bool> m_isRequested{false};
};

} // namespace restoration
