#pragma once

#include "velorncore10.h"

namespace vel {

/// The busy byte: non-zero while a guarded call runs. A plain byte, tested and then set: it turns
/// away a call made from inside another, not two threads that enter in the same instant.
class BusyByte {
public:
    bool isSet() const noexcept { return m_busy != 0; }
    void set() noexcept { m_busy = 1; }
    void clear() noexcept { m_busy = 0; }

private:
    unsigned char m_busy = 0;
};

BusyByte& busyByte() noexcept;

/// The text of the last text failure, 4096 characters, process-wide.
const char* errorText() noexcept;

/// Empties the error text by clearing its first character; what stood behind stays there.
void clearErrorText() noexcept;

/// Copies `text` to the error text, at most 4094 characters. The terminating zero is written one
/// place too far on: the character at the text's length stays as it was. Hosts know it that way.
void storeErrorText(const char* text) noexcept;

/// The status that stands for the exception in flight: a text is stored and gives -5, an integer n
/// gives n - 1000, everything else -1000. To be called from a catch clause only.
int32_t statusOfCurrentFailure() noexcept;

/// The frame of the guarded exports: empties the error text, turns away a call into the busy
/// library with status 1, keeps the busy byte set while `body` runs and turns its failures into
/// statuses. `body` returns the status of a call that did not fail.
template <class Body>
int32_t runGuarded(Body&& body) noexcept {
    clearErrorText();
    if (busyByte().isSet()) {
        return VELORN_OK;
    }
    busyByte().set();
    int32_t status;
    try {
        status = body();
    } catch (...) {
        status = statusOfCurrentFailure();
    }
    busyByte().clear();
    return status;
}

} // namespace vel
