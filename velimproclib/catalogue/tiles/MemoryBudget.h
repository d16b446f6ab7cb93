#pragma once

#include <cstdint>

/// How much memory a process may plan with. On the path of no export. Thread-safe, never failing:
/// where the system gives no answer, every figure is 0.
namespace vel {

/// What the system tells about memory, in bytes.
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

/// The figures of this moment; all 0 when the system's query fails.
MemoryFigures queryMemory() noexcept;

MemoryBudget memoryBudget(const MemoryFigures& figures) noexcept;
MemoryBudget memoryBudget() noexcept;

/// Pixels that memory allows to work on at a time, at 1300 bytes a pixel, at most 3500000: the
/// smallest of total physical memory, available page file and available virtual memory counts.
std::int32_t pixelBudget(const MemoryFigures& figures) noexcept;
std::int32_t pixelBudget() noexcept;

} // namespace vel
