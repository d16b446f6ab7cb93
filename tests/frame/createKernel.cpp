#include "velimproclib/frame/createKernel.h"

#include "velimproclib/veldeblurcv/kernels/createDiscKernel.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

TEST(CreateKernel, CopiesTheKernelRowByRowAndCentresTheAnchors) {
    std::vector<float> values(26, -1.0f);
    KernelRecord record{0, 0, 0, 0, values.data()};
    ASSERT_EQ(vel::createKernel(1, 1.7f, 0.0f, &record), VELORN_OK);
    const cv::Mat expected = vel::createDiscKernel(1.7f);
    ASSERT_EQ(record.width, 5);
    ASSERT_EQ(record.height, 5);
    EXPECT_EQ(record.anchorX, 2);
    EXPECT_EQ(record.anchorY, 2);
    for (int i = 0; i < 25; ++i) {
        EXPECT_EQ(values[static_cast<std::size_t>(i)], expected.at<float>(i / 5, i % 5));
    }
    EXPECT_EQ(values[25], -1.0f);
}

TEST(CreateKernel, RefusedCallsLeaveTheRecordUnchanged) {
    KernelRecord record{1, 2, 3, 4, nullptr};
    EXPECT_EQ(vel::createKernel(0, 1.0f, 0.0f, &record), VELORN_BAD_ARGUMENT);
    EXPECT_EQ(vel::createKernel(0, 1.0f, 0.0f, nullptr), VELORN_BAD_ARGUMENT);
    EXPECT_EQ(record.width, 1);
    EXPECT_EQ(record.anchorY, 4);
}

} // namespace
