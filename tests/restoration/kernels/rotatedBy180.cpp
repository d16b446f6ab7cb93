#include "restoration/kernels/rotatedBy180.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(RotatedBy180, FirstValueBecomesTheLast) {
    const Kernel kernel = rotatedBy180({3, 1, {1, 2, 4}, {300.0f, 0.5f}});
    EXPECT_EQ(kernel.values, (std::vector<float>{4, 2, 1}));
    EXPECT_EQ(kernel.trust.strongest, 300.0f);
    EXPECT_EQ(kernel.trust.share, 0.5f);
}

} // namespace
} // namespace restoration
