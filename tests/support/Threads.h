#pragma once

#include <gtest/gtest.h>
#include <omp.h>

namespace vel::test {

/// Sets the number of threads of parallel regions to `count` for its lifetime.
class ThreadCount {
public:
    explicit ThreadCount(int count) : m_before(omp_get_max_threads()) {
        omp_set_num_threads(count);
    }
    ~ThreadCount() { omp_set_num_threads(m_before); }
    ThreadCount(const ThreadCount&) = delete;
    ThreadCount& operator=(const ThreadCount&) = delete;

private:
    int m_before;
};

/// Runs `check` with parallel regions of 1, 2 and 4 threads.
template <class Check>
void forThreadCounts(Check&& check) {
    for (const int threads : {1, 2, 4}) {
        SCOPED_TRACE(testing::Message() << threads << " threads");
        const ThreadCount count(threads);
        check();
    }
}

} // namespace vel::test
