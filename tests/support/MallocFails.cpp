#include "tests/support/MallocFails.h"

#include <cstddef>

extern "C" void* __wrap_malloc(std::size_t bytes);
extern "C" void* __real_malloc(std::size_t bytes);
extern "C" void* __wrap_malloc(std::size_t bytes) {
    using vel::test::failingMallocs;
    if (failingMallocs == 0) {
        return __real_malloc(bytes);
    }
    if (failingMallocs != vel::test::kEveryCall) {
        --failingMallocs;
    }
    return nullptr;
}
