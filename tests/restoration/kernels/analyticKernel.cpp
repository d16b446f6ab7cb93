#include "restoration/kernels/analyticKernel.h"

#include "restoration/failures/Failure.h"
#include "velimproclib/frame/createKernel.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

namespace restoration {
namespace {

struct Blur {
    VelornBlur blur;
    float extent;
    float angle;
};

class AnalyticKernel : public testing::TestWithParam<Blur> {};

TEST_P(AnalyticKernel, HasTheValuesOfTheCore) {
    const auto& [blur, extent, angle] = GetParam();
    std::vector<float> values(511 * 511);
    KernelRecord record{0, 0, 0, 0, values.data()};
    ASSERT_EQ(vel::createKernel(blur, extent, angle, &record), VELORN_OK);
    values.resize(static_cast<std::size_t>(record.width) * static_cast<std::size_t>(record.height));
    const Kernel kernel = analyticKernel(blur, extent, angle);
    EXPECT_EQ(kernel.width, record.width);
    EXPECT_EQ(kernel.height, record.height);
    EXPECT_EQ(kernel.values, values);
    EXPECT_EQ(kernel.trust.strongest, Trust().strongest);
    EXPECT_EQ(kernel.trust.share, 1.0f);
}

TEST_P(AnalyticKernel, HasOddSidesAndSumOne) {
    const auto& [blur, extent, angle] = GetParam();
    const Kernel kernel = analyticKernel(blur, extent, angle);
    EXPECT_EQ(kernel.width % 2, 1);
    EXPECT_EQ(kernel.height % 2, 1);
    EXPECT_NEAR(std::accumulate(kernel.values.begin(), kernel.values.end(), 0.0), 1.0, 1e-4);
}

INSTANTIATE_TEST_SUITE_P(
    Blurs, AnalyticKernel,
    testing::Values(Blur{VELORN_BLUR_GAUSSIAN, 1.5f, 0.0f}, Blur{VELORN_BLUR_GAUSSIAN, 84.9f, 0.0f},
                    Blur{VELORN_BLUR_DISC, 4.0f, 0.0f}, Blur{VELORN_BLUR_DISC, 255.4f, 0.0f},
                    Blur{VELORN_BLUR_MOTION, 15.0f, 30.0f}, Blur{VELORN_BLUR_MOTION, 15.0f, -1e6f},
                    Blur{VELORN_BLUR_MOTION, 715.0f, 45.0f}));

VelornStatus statusOf(VelornBlur blur, float extent, float angle) {
    try {
        analyticKernel(blur, extent, angle);
        return VELORN_STATUS_OK;
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(), "a side of the kernel is longer than 511 pixels");
        return failure.status();
    }
}

TEST(AnalyticKernelLimits, LargestExtentsFitAndSlightlyLargerOnesFail) {
    EXPECT_EQ(statusOf(VELORN_BLUR_GAUSSIAN, 85.1f, 0.0f), VELORN_STATUS_OK);
    EXPECT_EQ(statusOf(VELORN_BLUR_GAUSSIAN, 85.2f, 0.0f), VELORN_STATUS_KERNEL_TOO_LARGE);
    EXPECT_EQ(statusOf(VELORN_BLUR_DISC, 255.4f, 0.0f), VELORN_STATUS_OK);
    EXPECT_EQ(statusOf(VELORN_BLUR_DISC, 255.5f, 0.0f), VELORN_STATUS_KERNEL_TOO_LARGE);
    EXPECT_EQ(statusOf(VELORN_BLUR_MOTION, 511.0f, 0.0f), VELORN_STATUS_OK);
    EXPECT_EQ(statusOf(VELORN_BLUR_MOTION, 514.0f, 90.0f), VELORN_STATUS_KERNEL_TOO_LARGE);
    EXPECT_EQ(statusOf(VELORN_BLUR_MOTION, 715.0f, 45.0f), VELORN_STATUS_OK);
    EXPECT_EQ(statusOf(VELORN_BLUR_MOTION, 750.0f, 45.0f), VELORN_STATUS_KERNEL_TOO_LARGE);
}

TEST(AnalyticKernelLimits, HugeExtentsFailWithoutAnAllocation) {
    for (const VelornBlur blur : {VELORN_BLUR_GAUSSIAN, VELORN_BLUR_DISC, VELORN_BLUR_MOTION}) {
        EXPECT_EQ(statusOf(blur, 3e38f, 45.0f), VELORN_STATUS_KERNEL_TOO_LARGE);
    }
}

TEST(AnalyticKernelLimits, TinyExtentsGiveOnePoint) {
    for (const VelornBlur blur : {VELORN_BLUR_GAUSSIAN, VELORN_BLUR_DISC, VELORN_BLUR_MOTION}) {
        EXPECT_EQ(analyticKernel(blur, 1e-45f, 45.0f).values, std::vector<float>{1.0f});
    }
}

} // namespace
} // namespace restoration
