#pragma once

#include <cstdint>

/// The memory that a process may plan with. Thread-safe. Never fails: when the system gives no
/// answer, every figure is 0.
namespace vel {

/// Memory figures of the system, in bytes.
struct MemoryFigures {
    double totalPhysical;
    double availablePhysical;
    double availablePageFile; ///< what this process may still commit
    double availableVirtual;  ///< what is left of this process's address space
};

struct MemoryBudget {
    double physical;      ///< available physical memory in bytes, at most 2.5e9
    double virtualMemory; ///< available virtual memory in bytes
};

/// The current figures; all 0 when the system's query fails.
MemoryFigures queryMemory() noexcept;

MemoryBudget memoryBudget(const MemoryFigures& figures) noexcept;
MemoryBudget memoryBudget() noexcept;

/// The number of pixels that memory allows to process at a time, at 1300 bytes per pixel: from the
/// smallest of total physical memory, available page file and available virtual memory, at most
/// 3500000.
std::int32_t pixelBudget(const MemoryFigures& figures) noexcept;
std::int32_t pixelBudget() noexcept;

} // namespace vel
