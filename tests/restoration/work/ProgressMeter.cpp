#include "restoration/work/ProgressMeter.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(ProgressMeter, CountsUnitsWithinTheShareOfThePhase) {
    ProgressMeter meter;
    EXPECT_EQ(meter.done(), 0.0);
    meter.beginPhase(0.5, 4);
    meter.advance();
    EXPECT_EQ(meter.done(), 0.125);
    meter.advance(9);
    EXPECT_EQ(meter.done(), 0.5);
}

TEST(ProgressMeter, APhaseBeginsWhereTheOneBeforeItWouldHaveEnded) {
    ProgressMeter meter;
    meter.beginPhase(0.5, 4);
    meter.beginPhase(1.0, 2);
    EXPECT_EQ(meter.done(), 0.5);
    meter.advance();
    EXPECT_EQ(meter.done(), 0.75);
}

TEST(ProgressMeter, APhaseThatWouldGoBackStays) {
    ProgressMeter meter;
    meter.beginPhase(0.5, 1);
    meter.beginPhase(0.25, 1);
    meter.advance();
    EXPECT_EQ(meter.done(), 0.5);
}

} // namespace
} // namespace restoration
