#include <gtest/gtest.h>

extern "C" int makeKernelInC(void);

namespace {

TEST(Header, CompilesInAHostWrittenInC) {
    EXPECT_EQ(makeKernelInC(), 9);
}

} // namespace
