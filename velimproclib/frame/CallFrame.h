#pragma once

#include "velorncore10.h"

#include <utility>

namespace vel {

/// Set while a guarded call runs. A plain byte that is tested and then set: it refuses a call that
/// is made from inside another one, but not one of two threads that enter at the same instant.
class BusyByte {
public:
    bool isSet() const noexcept { return m_busy != 0; }
    void set() noexcept { m_busy = 1; }
    void clear() noexcept { m_busy = 0; }

private:
    unsigned char m_busy = 0;
};

/// The busy byte of the process.
BusyByte& busyByte() noexcept;

/// The text of the last text failure, in a process-wide buffer of 4096 characters.
const char* errorText() noexcept;

/// Clears the first character of the error text. The characters after it remain.
void clearErrorText() noexcept;

/// Copies at most 4094 characters of `text` to the error text. The terminating zero is written one
/// place too late, as hosts expect it: the character at the length of the text remains.
void storeErrorText(const char* text) noexcept;

/// Returns the status of the exception in flight: -5 for a text, which is stored, n - 1000 for an
/// integer n, and -1000 for anything else. Call it from a catch clause only.
int32_t statusOfCurrentFailure() noexcept;

/// The frame of the guarded exports. Clears the error text, refuses the call with status 1 if the
/// library is busy, keeps the busy byte set while the call runs and turns failures into statuses.
///
/// @param open returns the call: an object that owns everything the call allocates. Its `run`
///        returns the status of a call that does not fail. Opening, running and destroying the
///        call may throw.
template <class Open>
int32_t runGuardedCall(Open&& open) noexcept {
    clearErrorText();
    if (busyByte().isSet()) {
        return VELORN_OK;
    }
    busyByte().set();
    int32_t status;
    try {
        auto call = std::forward<Open>(open)();
        status = call.run();
        if (status == VELORN_CANCELLED) {
            // A cancelled call ends the busy state before it destroys its objects; every other call
            // destroys them first.
            busyByte().clear();
        }
    } catch (...) {
        status = statusOfCurrentFailure();
    }
    busyByte().clear();
    return status;
}

/// The same for a call without objects that outlive `body`, which returns the status.
template <class Body>
int32_t runGuarded(Body&& body) noexcept {
    struct Call {
        Body& run;
    };
    return runGuardedCall([&] { return Call{body}; });
}

} // namespace vel
