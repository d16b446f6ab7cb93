#pragma once

#include "restoration/boundary/lastMessage.h"
#include "velorn.h"

namespace restoration {

/// The status of the exception that is being handled; stores its message.
VelornStatus statusOfCurrentException() noexcept;

/// Runs `call`. Every exception becomes a status and a message.
template <class Call>
VelornStatus guardedCall(const Call& call) noexcept {
    clearMessage();
    try {
        call();
        // The host's progress function may have made calls of its own.
        clearMessage();
        return VELORN_STATUS_OK;
    } catch (...) {
        return statusOfCurrentException();
    }
}

} // namespace restoration
