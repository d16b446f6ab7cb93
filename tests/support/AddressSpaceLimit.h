#pragma once

#include <cstddef>
#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <vector>
#include <windows.h>
#else
#include <fstream>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace vel::test {

#ifdef __GLIBC__
/// Makes the limit reliable after other tests: large blocks return to the system as soon as they
/// are freed, and no thread reserves address space for a heap of its own.
inline const bool heapKeepsNoReserves =
    mallopt(M_MMAP_THRESHOLD, 128 * 1024) != 0 && mallopt(M_ARENA_MAX, 1) != 0;
#endif

/// Limits the memory of the process for its lifetime to little more than `bytes` above the current
/// use. The threads of the test must already run. Does not work under the address sanitizer, which
/// needs address space of its own.
class AddressSpaceLimit {
public:
#ifdef _WIN32
    /// Reserves the whole address space except for `bytes`.
    explicit AddressSpaceLimit(std::size_t bytes) {
        constexpr std::size_t kLargest = std::size_t{1} << 30;
        constexpr std::size_t kSmallest = std::size_t{1} << 16;
        m_blocks.reserve((std::size_t{1} << 31) / kSmallest);
        void* const room = reserve(bytes);
        for (std::size_t size = kLargest; size >= kSmallest; size /= 2) {
            while (void* const block = reserve(size)) {
                m_blocks.push_back(block);
            }
        }
        VirtualFree(room, 0, MEM_RELEASE);
    }
    ~AddressSpaceLimit() {
        for (void* const block : m_blocks) {
            VirtualFree(block, 0, MEM_RELEASE);
        }
    }
#else
    explicit AddressSpaceLimit(std::size_t bytes) {
        getrlimit(RLIMIT_AS, &m_before);
        struct rlimit narrow = m_before;
        narrow.rlim_cur = inUse() + bytes;
        setrlimit(RLIMIT_AS, &narrow);
    }
    ~AddressSpaceLimit() {
        setrlimit(RLIMIT_AS, &m_before);
    }
#endif
    AddressSpaceLimit(const AddressSpaceLimit&) = delete;
    AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;

private:
#ifdef _WIN32
    static void* reserve(std::size_t bytes) {
        return VirtualAlloc(nullptr, bytes, MEM_RESERVE, PAGE_NOACCESS);
    }

    std::vector<void*> m_blocks;
#else
    static std::size_t inUse() {
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    }

    struct rlimit m_before {};
#endif
};

} // namespace vel::test
