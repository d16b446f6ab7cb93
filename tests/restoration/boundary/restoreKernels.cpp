#include "restoration/boundary/restoreKernels.h"

#include "restoration/boundary/VelornKernel.h"

#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace restoration {
namespace {

TEST(CheckedKernels, LeaveOutKernelsThatBlurNothing) {
    const VelornKernel point{{1, 1, {1.0f}}};
    const VelornKernel line{{3, 1, {0.25f, 0.5f, 0.25f}}};
    VelornPicture source{};
    source.width = 20;
    source.height = 10;
    source.channels = 3;
    const std::array<const VelornKernel*, 3> points{&point, &point, &point};
    EXPECT_TRUE(checkedKernels(points.data(), 1, source).empty());
    EXPECT_TRUE(checkedKernels(points.data(), 3, source).empty());
    const std::array<const VelornKernel*, 3> mixed{&point, &line, &point};
    EXPECT_EQ(checkedKernels(mixed.data(), 3, source),
              (std::vector<const Kernel*>{&point.kernel, &line.kernel, &point.kernel}));
}

} // namespace
} // namespace restoration
