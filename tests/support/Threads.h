#pragma once

#include <gtest/gtest.h>
#include <omp.h>

namespace vel::test {

/// Runs `check` with regions of 1, 2 and 4 threads and leaves the setting as it was.
template <class Check>
void forThreadCounts(Check&& check) {
    const int before = omp_get_max_threads();
    for (const int threads : {1, 2, 4}) {
        SCOPED_TRACE(testing::Message() << threads << " threads");
        omp_set_num_threads(threads);
        check();
    }
    omp_set_num_threads(before);
}

} // namespace vel::test
