#include "hosts/command/batch/MemoryBudget.h"

#include <algorithm>
#include <utility>

namespace velorn {

MemoryBudget::Share::Share(Share&& other) noexcept
    : m_budget(std::exchange(other.m_budget, nullptr)), m_bytes(other.m_bytes) {}

MemoryBudget::Share& MemoryBudget::Share::operator=(Share&& other) noexcept {
    std::swap(m_budget, other.m_budget);
    std::swap(m_bytes, other.m_bytes);
    return *this;
}

MemoryBudget::Share::~Share() {
    if (m_budget != nullptr) {
        m_budget->giveBack(m_bytes);
    }
}

MemoryBudget::Share MemoryBudget::take(std::uint64_t bytes) {
    const std::uint64_t taken = std::min(bytes, m_bytes);
    std::unique_lock lock(m_mutex);
    const std::uint64_t ticket = m_nextTicket++;
    m_changed.wait(lock, [&] { return ticket == m_served && taken <= m_bytes - m_taken; });
    m_taken += taken;
    ++m_served;
    m_changed.notify_all();
    return {*this, taken};
}

void MemoryBudget::giveBack(std::uint64_t bytes) {
    {
        const std::lock_guard lock(m_mutex);
        m_taken -= bytes;
    }
    m_changed.notify_all();
}

} // namespace velorn
