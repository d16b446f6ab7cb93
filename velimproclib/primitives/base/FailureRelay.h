#pragma once

#include <atomic>
#include <exception>
#include <utility>

namespace vel {

/// Carries the failure of a parallel region's threads or tasks out to the calling thread: no
/// exception may cross the edge of a region. Of several failures the first in time is carried, the
/// others are lost. `run` inside, `rethrow` behind the region.
class FailureRelay {
public:
    template <class Work>
    void run(Work&& work) noexcept {
        try {
            std::forward<Work>(work)();
        } catch (...) {
            if (!m_taken.test_and_set()) {
                m_failure = std::current_exception();
            }
        }
    }

    /// To be called when the region has ended.
    void rethrow() const {
        if (m_failure) {
            std::rethrow_exception(m_failure);
        }
    }

private:
    std::atomic_flag m_taken;
    std::exception_ptr m_failure;
};

} // namespace vel
