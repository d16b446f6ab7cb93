#include "velimproclib/images/morphInside.h"

#include "tests/support/NothrowNewFails.h"

#include <gtest/gtest.h>
#include <new>

namespace vel {
namespace {

using Bytes = cv::Mat_<std::uint8_t>;

TEST(MorphInside, PassesSpreadOnePixelEachAndLeaveTheFrame) {
    Bytes plane(9, 9, std::uint8_t{10});
    plane(4, 4) = 200;
    morphInside(plane, 2, dilate3x3InPlaceU8);
    for (int y = 0; y < 9; ++y) {
        for (int x = 0; x < 9; ++x) {
            const bool near = y >= 2 && y <= 6 && x >= 2 && x <= 6;
            EXPECT_EQ(plane(y, x), near ? 200 : 10) << x << ',' << y;
        }
    }
    morphInside(plane, 9, dilate3x3InPlaceU8);
    EXPECT_EQ(plane(1, 1), 200);
    EXPECT_EQ(plane(0, 1), 10);
    EXPECT_EQ(plane(8, 8), 10);
    morphInside(plane, 9, erode3x3InPlaceU8);
    EXPECT_EQ(plane(4, 4), 10);
}

TEST(MorphInside, PlanesWithoutPixelsInsideTheFrameStay) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(2, 7), cv::Size(7, 2)}) {
        Bytes plane(size, std::uint8_t{10});
        plane(0, 0) = 200;
        const Bytes before = plane.clone();
        morphInside(plane, 3, dilate3x3InPlaceU8);
        EXPECT_EQ(cv::countNonZero(plane != before), 0) << size;
    }
}

TEST(MorphInside, ExhaustedMemoryOfAWidePlaneIsRaised) {
    Bytes plane(3, 5000, std::uint8_t{10});
    plane(1, 2500) = 200;
    const Bytes before = plane.clone();
    const test::NothrowNewFails noMemory;
    EXPECT_THROW(morphInside(plane, 1, dilate3x3InPlaceU8), std::bad_alloc);
    EXPECT_EQ(cv::countNonZero(plane != before), 0);
}

} // namespace
} // namespace vel
