#include "velimproclib/primitives/base/ControlWord.h"

#include "tests/support/ControlBits.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace vel;

TEST(ControlWord, AdoptedWordHoldsForTheScopeAndTheOwnWordReturns) {
    if (!test::kHasControlWord) {
        GTEST_SKIP() << "no floating-point control word on this processor";
    }
    const test::ControlBits plain(0);
    const ControlWord plainWord = ControlWord::ofThisThread();
    std::thread([&] {
        const test::ControlBits flushing(test::kFlushDenormals);
        {
            const AdoptedControlWord adopted(plainWord);
            EXPECT_FALSE(test::flushesDenormals());
        }
        EXPECT_TRUE(test::flushesDenormals());
    }).join();
    EXPECT_FALSE(test::flushesDenormals());
}

} // namespace
