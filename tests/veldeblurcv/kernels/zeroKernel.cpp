#include "velimproclib/veldeblurcv/kernels/zeroKernel.h"

#include <gtest/gtest.h>

namespace {

TEST(ZeroKernel, IsZeroFilled) {
    const cv::Mat kernel = vel::zeroKernel(3, 5);
    EXPECT_EQ(kernel.type(), CV_32FC1);
    EXPECT_EQ(kernel.size(), cv::Size(5, 3));
    EXPECT_EQ(cv::countNonZero(kernel), 0);
}

TEST(ZeroKernel, SidesThatNoMatrixCanHaveFail) {
    EXPECT_THROW(vel::zeroKernel(0, 5), std::bad_alloc);
    EXPECT_THROW(vel::zeroKernel(5, -1), std::bad_alloc);
    EXPECT_THROW(vel::zeroKernel(std::int64_t{1} << 31, 1), std::bad_alloc);
}

} // namespace
