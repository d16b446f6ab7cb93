#include "restoration/threads/ProgressMeter.h"

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

TEST(ProgressMeter, AnOpenPhaseCountsPiecesAndApproachesItsEnd) {
    ProgressMeter meter;
    meter.beginOpenPhase(0.5, 10);
    meter.advance(10);
    EXPECT_EQ(meter.done(), 0.0);
    for (int piece = 0; piece < 10; ++piece) {
        meter.countPiece();
    }
    EXPECT_EQ(meter.done(), 0.25);
    for (int piece = 0; piece < 1000; ++piece) {
        meter.countPiece();
    }
    EXPECT_GT(meter.done(), 0.49);
    EXPECT_LT(meter.done(), 0.5);
    meter.beginPhase(1.0, 2);
    EXPECT_EQ(meter.done(), 0.5);
    meter.countPiece();
    EXPECT_EQ(meter.done(), 0.5);
}

TEST(ProgressMeter, APhaseThatWouldGoBackStays) {
    ProgressMeter meter;
    meter.beginPhase(0.5, 1);
    meter.beginPhase(0.25, 1);
    meter.advance();
    EXPECT_EQ(meter.done(), 0.5);
}

TEST(ProgressMeter, PhasesOfASpanShareIt) {
    ProgressMeter meter;
    meter.beginSpan(0.4);
    meter.beginPhase(0.5, 2);
    meter.advance();
    EXPECT_DOUBLE_EQ(meter.done(), 0.1);
    meter.beginPhase(1.0, 1);
    meter.advance();
    EXPECT_DOUBLE_EQ(meter.done(), 0.4);
    meter.beginSpan(1.0);
    EXPECT_DOUBLE_EQ(meter.done(), 0.4);
    meter.beginPhase(0.5, 1);
    meter.advance();
    EXPECT_DOUBLE_EQ(meter.done(), 0.7);
}

} // namespace
} // namespace restoration
