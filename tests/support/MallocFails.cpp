#include "tests/support/MallocFails.h"

#include <cstddef>

extern "C" void* __wrap_malloc(std::size_t bytes);
extern "C" void* __real_malloc(std::size_t bytes);
extern "C" void* __wrap_malloc(std::size_t bytes) {
    return vel::test::mallocFails ? nullptr : __real_malloc(bytes);
}
