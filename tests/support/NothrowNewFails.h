#pragma once

#include <atomic>

/// Lets tests see what happens when memory that is asked for with `new (std::nothrow) T[n]` is not
/// there. The test program must be built with NothrowNewFails.cpp.
namespace vel::test {

inline std::atomic<bool> nothrowNewFails = false;

/// While one lives, `new (std::nothrow) T[n]` gives null.
class NothrowNewFails {
public:
    NothrowNewFails() { nothrowNewFails = true; }
    ~NothrowNewFails() { nothrowNewFails = false; }
    NothrowNewFails(const NothrowNewFails&) = delete;
    NothrowNewFails& operator=(const NothrowNewFails&) = delete;
};

} // namespace vel::test
