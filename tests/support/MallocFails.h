#pragma once

#include <atomic>

/// Makes malloc fail. The test program must be linked with `-Wl,--wrap=malloc` and MallocFails.cpp.
/// This affects the calls of the statically linked library, not those of shared libraries:
/// exceptions and containers still get memory.
namespace vel::test {

inline constexpr int kEveryCall = -1;

/// The number of calls of malloc that still fail, or `kEveryCall`.
inline std::atomic<int> failingMallocs = 0;

/// While an object lives, the next `calls` calls of malloc return null.
class MallocFails {
public:
    explicit MallocFails(int calls = kEveryCall) { failingMallocs = calls; }
    ~MallocFails() { failingMallocs = 0; }
    MallocFails(const MallocFails&) = delete;
    MallocFails& operator=(const MallocFails&) = delete;
};

} // namespace vel::test
