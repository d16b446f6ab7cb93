#include "hosts/command/blind/RestorationMeasure.h"

#include "hosts/command/blind/KernelTurn.h"
#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>

namespace {

using vel::test::blurred;
using vel::test::drawnPicture;
using velorn::BlurKernel;
using velorn::doubtfulness;
using velorn::RgbPixels;
using velorn::roughness;
using Bytes = std::vector<std::uint8_t>;

TEST(RestorationMeasure, RoughnessIsTheMeanRootOfTheSteps) {
    // Steps of 16 levels at every eighth column, none downwards.
    RgbPixels stripes{64, 64, Bytes(3 * 64 * 64)};
    for (std::size_t i = 0; i < 3 * 64 * 64; ++i) {
        std::get<Bytes>(stripes.samples)[i] = (i / 3 % 64) / 8 % 2 == 0 ? 16 : 0;
    }
    // 47 columns and rows lie inside the band, and 5 of the columns have a step.
    EXPECT_NEAR(roughness(stripes), 4.0 * 5.0 / (2.0 * 47.0), 1e-3);
}

TEST(RestorationMeasure, RipplesAreRougherThanAnEdgeOfTheSameStrength) {
    RgbPixels edge{64, 64, Bytes(3 * 64 * 64, 100)};
    RgbPixels ripples = edge;
    for (std::size_t i = 0; i < 3 * 64 * 64; ++i) {
        const std::size_t column = i / 3 % 64;
        std::get<Bytes>(edge.samples)[i] = column < 32 ? 100 : 140;
        std::get<Bytes>(ripples.samples)[i] = column < 32 || column % 2 == 0 ? 100 : 110;
    }
    EXPECT_GT(roughness(ripples), roughness(edge));
}

TEST(RestorationMeasure, PictureThatIsExplainedFullyLeavesNoDoubt) {
    const RgbPixels sharp = drawnPicture(160, 120);
    EXPECT_EQ(doubtfulness(sharp, sharp, velorn::pointKernel()), 0.0);
    const BlurKernel disc = velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 3.0f, 0.0f});
    EXPECT_LT(doubtfulness(blurred(sharp, disc), sharp, disc), 0.05);
}

TEST(RestorationMeasure, KernelThatDoesNotFitIsDoubtful) {
    const RgbPixels sharp = drawnPicture(160, 120);
    const BlurKernel disc = velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 3.0f, 0.0f});
    const BlurKernel motion = velorn::makeKernel({velorn::AnalyticBlur::Shape::Motion, 9.0f, 0.0f});
    EXPECT_GT(doubtfulness(blurred(sharp, disc), sharp, motion), 1.0);
}

TEST(RestorationMeasure, BlurringAgainTurnsNoKernelRound) {
    const RgbPixels sharp = drawnPicture(160, 120);
    const BlurKernel uneven{5, 1, {0.6f, 0.2f, 0.1f, 0.1f, 0.0f}};
    const RgbPixels soft = blurred(sharp, uneven);
    EXPECT_LT(doubtfulness(soft, sharp, uneven),
              0.1 * doubtfulness(soft, sharp, velorn::turnedRound(uneven)));
}

TEST(RestorationMeasure, EmptyPicturesAreNeitherRoughNorDoubtful) {
    const RgbPixels grey{40, 30, Bytes(3600, 77)};
    EXPECT_EQ(roughness(grey), 0.0);
    EXPECT_EQ(roughness({1, 1, Bytes(3)}), 0.0);
    EXPECT_EQ(doubtfulness(grey, grey, velorn::pointKernel()), 0.0);
    EXPECT_EQ(doubtfulness({1, 1, Bytes(3)}, {1, 1, Bytes(3)}, velorn::pointKernel()), 0.0);
}

} // namespace
