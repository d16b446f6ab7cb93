#include "restoration/blind/local/cellTrust.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr Trust kWhole{3000.0f, 0.25f};

TEST(CellTrust, FollowsTheEvidenceInTheCell) {
    CellKernel found{.hasEvidence = true};
    found.evidence.residual = 2.0;
    found.evidence.agreement = 0.3;
    const Trust trust = cellTrust(found, kWhole);
    EXPECT_EQ(trust.share, trustIn(found.evidence, confidenceIn(found.evidence)).share);
    EXPECT_NE(trust.share, kWhole.share);
}

TEST(CellTrust, WithoutEvidenceItIsThatOfTheWholePicture) {
    EXPECT_EQ(cellTrust({}, kWhole).share, 0.25f);
}

TEST(CellTrust, SharpCellsAreNotMixedWithThePicture) {
    EXPECT_EQ(cellTrust({.isSharp = true}, kWhole).share, 1.0f);
}

TEST(CellTrust, TheStrengthIsAtMost300AndThatOfTheWholePicture) {
    EXPECT_EQ(cellTrust({}, kWhole).strongest, 300.0f);
    EXPECT_EQ(cellTrust({}, Trust{100.0f, 1.0f}).strongest, 100.0f);
    EXPECT_EQ(cellTrust({.isSharp = true}, kWhole).strongest, 300.0f);
    EXPECT_EQ(cellTrust({.hasEvidence = true}, kWhole).strongest, 300.0f);
}

} // namespace
} // namespace restoration
