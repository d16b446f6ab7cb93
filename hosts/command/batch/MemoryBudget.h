#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace velorn {

/// The memory that pictures in work may take together. Pictures that need more than is left wait in
/// the order of their requests; one that needs more than there is gets all of it, alone. Any number
/// of threads may use an object at once.
class MemoryBudget {
public:
    explicit MemoryBudget(std::uint64_t bytes) : m_bytes(bytes) {}
    MemoryBudget(const MemoryBudget&) = delete;
    MemoryBudget& operator=(const MemoryBudget&) = delete;

    std::uint64_t bytes() const { return m_bytes; }

    /// The memory of one picture, returned to the budget by the destructor.
    class Share {
    public:
        Share() = default;
        Share(Share&& other) noexcept;
        Share& operator=(Share&& other) noexcept;
        ~Share();

    private:
        friend class MemoryBudget;
        Share(MemoryBudget& budget, std::uint64_t bytes) : m_budget(&budget), m_bytes(bytes) {}

        MemoryBudget* m_budget = nullptr;
        std::uint64_t m_bytes = 0;
    };

    /// Waits until `bytes` are left, or all of the budget if it is smaller.
    Share take(std::uint64_t bytes);

private:
    void giveBack(std::uint64_t bytes);

    const std::uint64_t m_bytes;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::uint64_t m_taken = 0;
    std::uint64_t m_nextTicket = 0;
    std::uint64_t m_served = 0;
};

} // namespace velorn
