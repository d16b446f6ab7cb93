#pragma once

#include <atomic>
#include <exception>
#include <utility>

namespace vel {

/// Carries a failure from the threads and tasks of a parallel region to the calling thread: no
/// exception may cross the edge of a region. It keeps the first failure in time and drops the
/// others. Call `run` inside the region and `rethrow` after it.
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

    /// Rethrows the failure, if there was one. Call it after the region has ended.
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
