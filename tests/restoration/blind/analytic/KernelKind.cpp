#include "restoration/blind/analytic/KernelKind.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(KernelKind, AnglesThatDifferByHalfATurnAreOne) {
    EXPECT_EQ(undirectedAngle(32.0f), 32.0f);
    EXPECT_EQ(undirectedAngle(-148.0f), 32.0f);
    EXPECT_EQ(undirectedAngle(120.0f), -60.0f);
    EXPECT_EQ(undirectedAngle(90.0f), 90.0f);
    EXPECT_EQ(undirectedAngle(-90.0f), 90.0f);
    EXPECT_EQ(undirectedAngle(270.0f), 90.0f);
    EXPECT_EQ(undirectedAngle(180.0f), 0.0f);
}

} // namespace
} // namespace restoration
