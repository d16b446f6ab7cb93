#pragma once

#include <atomic>

/// Makes `new (std::nothrow) T[n]` fail. The test program must be built with NothrowNewFails.cpp.
namespace vel::test {

inline std::atomic<bool> nothrowNewFails = false;

/// While an object lives, `new (std::nothrow) T[n]` returns null.
class NothrowNewFails {
public:
    NothrowNewFails() { nothrowNewFails = true; }
    ~NothrowNewFails() { nothrowNewFails = false; }
    NothrowNewFails(const NothrowNewFails&) = delete;
    NothrowNewFails& operator=(const NothrowNewFails&) = delete;
};

} // namespace vel::test
