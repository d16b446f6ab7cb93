#include "tests/support/NothrowNewFails.h"

#include <cstddef>
#include <new>

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    if (vel::test::nothrowNewFails) {
        return nullptr;
    }
    try {
        return ::operator new[](bytes);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
