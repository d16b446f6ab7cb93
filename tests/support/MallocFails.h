#pragma once

#include <atomic>

/// Lets tests see what happens when the heap has nothing left. In a test program that is linked
/// with `-Wl,--wrap=malloc` and MallocFails.cpp, the library's calls of malloc come here; those of
/// shared libraries do not, so that exceptions and containers still find memory.
namespace vel::test {

inline std::atomic<bool> mallocFails = false;

/// While one lives, malloc gives null.
class MallocFails {
public:
    MallocFails() { mallocFails = true; }
    ~MallocFails() { mallocFails = false; }
    MallocFails(const MallocFails&) = delete;
    MallocFails& operator=(const MallocFails&) = delete;
};

} // namespace vel::test
