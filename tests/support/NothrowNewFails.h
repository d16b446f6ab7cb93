#pragma once

#include <atomic>
#include <cstddef>
#include <new>

/// Lets tests see what happens when memory that is asked for with `new (std::nothrow) T[n]` is not
/// there. A test program that includes this in any of its files gets the allocation below.
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

[[gnu::weak]] void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    if (vel::test::nothrowNewFails) {
        return nullptr;
    }
    try {
        return ::operator new[](bytes);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
