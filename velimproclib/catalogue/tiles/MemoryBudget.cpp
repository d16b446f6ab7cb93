#include "velimproclib/catalogue/tiles/MemoryBudget.h"

#include "velimproclib/primitives/base/truncate.h"

#include <algorithm>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <cstdio>
#include <memory>
#include <sys/resource.h>
#include <sys/sysinfo.h>
#include <unistd.h>
#endif

namespace vel {

namespace {

constexpr double kMostPhysical = 2.5e9;
constexpr double kBytesPerPixel = 1300.0;
constexpr double kMostPixels = 3500000.0;

} // namespace

#ifdef _WIN32

MemoryFigures queryMemory() noexcept {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof(status);
    if (!GlobalMemoryStatusEx(&status)) {
        return {};
    }
    return {static_cast<double>(status.ullTotalPhys), static_cast<double>(status.ullAvailPhys),
            static_cast<double>(status.ullAvailPageFile),
            static_cast<double>(status.ullAvailVirtual)};
}

#else

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Bytes of address space that this process uses; 0 when unknown.
double usedAddressSpace() noexcept {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen("/proc/self/statm", "r"));
    unsigned long pages = 0;
    if (!file || std::fscanf(file.get(), "%lu", &pages) != 1) {
        return 0;
    }
    return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

/// Bytes of physical memory available without swapping; `fallback` when unknown.
double reclaimableMemory(double fallback) noexcept {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen("/proc/meminfo", "r"));
    char line[128];
    while (file && std::fgets(line, sizeof(line), file.get())) {
        unsigned long long kilobytes = 0;
        if (std::sscanf(line, "MemAvailable: %llu kB", &kilobytes) == 1) {
            return static_cast<double>(kilobytes) * 1024.0;
        }
    }
    return fallback;
}

/// The limit of this process's address space in bytes.
double addressSpace() noexcept {
    constexpr double kUserSpace = sizeof(void*) == 8 ? 0x1p47 : 0x1.8p31;
    rlimit limit{};
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return kUserSpace;
    }
    return std::min(static_cast<double>(limit.rlim_cur), kUserSpace);
}

} // namespace

MemoryFigures queryMemory() noexcept {
    struct sysinfo info {};
    if (sysinfo(&info) != 0) {
        return {};
    }
    const auto unit = static_cast<double>(info.mem_unit);
    const double available = reclaimableMemory(static_cast<double>(info.freeram) * unit);
    return {static_cast<double>(info.totalram) * unit, available,
            available + static_cast<double>(info.freeswap) * unit,
            std::max(addressSpace() - usedAddressSpace(), 0.0)};
}

#endif

MemoryBudget memoryBudget(const MemoryFigures& figures) noexcept {
    return {std::min(figures.availablePhysical, kMostPhysical), figures.availableVirtual};
}

MemoryBudget memoryBudget() noexcept {
    return memoryBudget(queryMemory());
}

std::int32_t pixelBudget(const MemoryFigures& figures) noexcept {
    const double bytes =
        std::min({figures.totalPhysical, figures.availablePageFile, figures.availableVirtual});
    return truncateToInt(std::min(bytes / kBytesPerPixel, kMostPixels));
}

std::int32_t pixelBudget() noexcept {
    return pixelBudget(queryMemory());
}

} // namespace vel
