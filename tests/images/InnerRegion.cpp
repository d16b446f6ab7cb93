#include "velimproclib/images/InnerRegion.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

namespace vel {
namespace {

TEST(InnerRegion, ExcludesTheInsetOnAllSides) {
    cv::Mat_<float> wide(9, 20, 0.0f);
    const cv::Mat plane = wide.colRange(2, 12);
    const InnerRegion<float> inner(plane, 3, 1);
    EXPECT_EQ(&wide(1, 5), inner.data);
    EXPECT_EQ(20 * 4, inner.step);
    EXPECT_EQ(4, inner.w);
    EXPECT_EQ(7, inner.h);
}

TEST(InnerRegion, PlaneThatIsTooSmallGivesASizeBelowOneAndAnAddressInside) {
    cv::Mat_<float> plane(2, 3, 0.0f);
    const InnerRegion<float> inner(plane, 3, 3);
    EXPECT_EQ(-3, inner.w);
    EXPECT_EQ(-4, inner.h);
    EXPECT_EQ(&plane(1, 2), inner.data);
}

TEST(InnerRegion, EmptyPlaneHasNoAddress) {
    const InnerRegion<float> inner(cv::Mat(), 1, 1);
    EXPECT_EQ(nullptr, inner.data);
}

} // namespace
} // namespace vel
