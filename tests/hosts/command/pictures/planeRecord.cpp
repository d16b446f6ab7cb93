#include "hosts/command/pictures/planeRecord.h"

#include "hosts/command/terminal/Failure.h"

#include <gtest/gtest.h>

namespace {

using velorn::planeRecord;
using velorn::RgbPixels;

TEST(PlaneRecord, DescribesTheSamples) {
    const RgbPixels narrow{5, 2, std::vector<std::uint8_t>(30)};
    const PlaneRecord bytes = planeRecord(narrow);
    EXPECT_EQ(bytes.format, psC3U8);
    EXPECT_EQ(bytes.data, std::get<std::vector<std::uint8_t>>(narrow.samples).data());
    EXPECT_EQ(bytes.step, 15);
    EXPECT_EQ(bytes.width, 5);
    EXPECT_EQ(bytes.height, 2);
    const RgbPixels wide{5, 2, std::vector<std::uint16_t>(30)};
    EXPECT_EQ(planeRecord(wide).format, psC3U16);
    EXPECT_EQ(planeRecord(wide).step, 30);
}

TEST(PlaneRecord, RowLongerThanAStepIsAFailure) {
    // Only the width counts here; no row of this length is allocated.
    EXPECT_THROW(planeRecord({800'000'000, 1, std::vector<std::uint8_t>()}), velorn::Failure);
}

} // namespace
