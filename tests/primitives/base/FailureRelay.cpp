#include "velimproclib/primitives/base/FailureRelay.h"

#include <gtest/gtest.h>

namespace {

using vel::FailureRelay;

TEST(FailureRelay, WithoutAFailureNothingIsRethrown) {
    FailureRelay failures;
    failures.run([] {});
    EXPECT_NO_THROW(failures.rethrow());
}

TEST(FailureRelay, CarriesEveryKindOfFailureOutOfARegion) {
    FailureRelay texts;
#pragma omp parallel num_threads(3)
    texts.run([] { throw "a text"; });
    EXPECT_THROW(texts.rethrow(), const char*);

    FailureRelay integers;
#pragma omp parallel num_threads(3)
    integers.run([] { throw 101; });
    EXPECT_THROW(integers.rethrow(), int);
}

TEST(FailureRelay, KeepsTheFirstFailure) {
    FailureRelay failures;
    failures.run([] { throw 1; });
    failures.run([] { throw 2; });
    try {
        failures.rethrow();
        FAIL() << "no failure arrived";
    } catch (int failure) {
        EXPECT_EQ(failure, 1);
    }
}

} // namespace
