#include "velimproclib/veldeblurcv/deconvolution/rowGroups.h"

#include <gtest/gtest.h>

namespace {

using namespace vel;

TEST(RowGroups, GroupsOfRowsCoverThePlane) {
    for (const int order : {8, 9, 10}) {
        const RealFft2D fft(order, order);
        EXPECT_EQ(fft.groupCount() * kGroupRows, fft.height());
        EXPECT_EQ(groupFloats(fft), static_cast<std::size_t>(kGroupRows * fft.width()));
        EXPECT_EQ(groupRowBytes(fft) * kGroupRows,
                  static_cast<std::ptrdiff_t>(groupFloats(fft) * sizeof(float)));
    }
}

} // namespace
