#pragma once

#include <cstddef>
#include <fstream>
#include <sys/resource.h>
#include <unistd.h>

namespace vel::test {

/// While one lives, the process gets hardly more than `bytes` of memory beyond what it has. Threads
/// that the test needs must have been started before. Not for the address sanitizer, which takes
/// address space of its own.
class AddressSpaceLimit {
public:
    explicit AddressSpaceLimit(std::size_t bytes) {
        getrlimit(RLIMIT_AS, &m_before);
        struct rlimit narrow = m_before;
        narrow.rlim_cur = inUse() + bytes;
        setrlimit(RLIMIT_AS, &narrow);
    }
    ~AddressSpaceLimit() { setrlimit(RLIMIT_AS, &m_before); }
    AddressSpaceLimit(const AddressSpaceLimit&) = delete;
    AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;

private:
    static std::size_t inUse() {
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    }

    struct rlimit m_before {};
};

} // namespace vel::test
