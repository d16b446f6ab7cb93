#include "hosts/command/blind/RestorationMeasures.h"

#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>

namespace {

using vel::test::blurred;
using vel::test::drawnPicture;
using velorn::BlurKernel;
using velorn::misfit;
using velorn::RgbPixels;
using velorn::roughness;
using Bytes = std::vector<std::uint8_t>;

TEST(RestorationMeasures, RoughnessIsTheMeanSquareRootOfTheSteps) {
    // Steps of 16 levels at every eighth column, none between rows.
    RgbPixels stripes{64, 64, Bytes(3 * 64 * 64)};
    for (std::size_t i = 0; i < 3 * 64 * 64; ++i) {
        std::get<Bytes>(stripes.samples)[i] = (i / 3 % 64) / 8 % 2 == 0 ? 16 : 0;
    }
    // The steps start at 47 columns and rows inside the band; 5 of the columns have a step.
    EXPECT_NEAR(roughness(stripes), 4.0 * 5.0 / (2.0 * 47.0), 1e-3);
}

TEST(RestorationMeasures, RipplesAreRougherThanAnEdgeOfTheSameContrast) {
    RgbPixels edge{64, 64, Bytes(3 * 64 * 64, 100)};
    RgbPixels ripples = edge;
    for (std::size_t i = 0; i < 3 * 64 * 64; ++i) {
        const std::size_t column = i / 3 % 64;
        std::get<Bytes>(edge.samples)[i] = column < 32 ? 100 : 140;
        std::get<Bytes>(ripples.samples)[i] = column < 32 || column % 2 == 0 ? 100 : 110;
    }
    EXPECT_GT(roughness(ripples), roughness(edge));
}

TEST(RestorationMeasures, RestorationThatExplainsThePictureHasNoMisfit) {
    const RgbPixels sharp = drawnPicture(160, 120);
    EXPECT_EQ(misfit(sharp, sharp, velorn::pointKernel()), 0.0);
    const BlurKernel disc = velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 3.0f, 0.0f});
    EXPECT_LT(misfit(blurred(sharp, disc), sharp, disc), 0.05);
}

TEST(RestorationMeasures, WrongKernelHasAMisfit) {
    const RgbPixels sharp = drawnPicture(160, 120);
    const BlurKernel disc = velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 3.0f, 0.0f});
    const BlurKernel motion = velorn::makeKernel({velorn::AnalyticBlur::Shape::Motion, 9.0f, 0.0f});
    EXPECT_GT(misfit(blurred(sharp, disc), sharp, motion), 1.0);
}

TEST(RestorationMeasures, MisfitDistinguishesTheOrientationsOfAKernel) {
    const RgbPixels sharp = drawnPicture(160, 120);
    const BlurKernel uneven{5, 1, {0.6f, 0.2f, 0.1f, 0.1f, 0.0f}};
    const RgbPixels soft = blurred(sharp, uneven);
    EXPECT_LT(misfit(soft, sharp, uneven), 0.1 * misfit(soft, sharp, velorn::rotatedBy180(uneven)));
}

TEST(RestorationMeasures, EmptyPicturesHaveNeitherRoughnessNorMisfit) {
    const RgbPixels grey{40, 30, Bytes(3600, 77)};
    EXPECT_EQ(roughness(grey), 0.0);
    EXPECT_EQ(roughness({1, 1, Bytes(3)}), 0.0);
    EXPECT_EQ(misfit(grey, grey, velorn::pointKernel()), 0.0);
    EXPECT_EQ(misfit({1, 1, Bytes(3)}, {1, 1, Bytes(3)}, velorn::pointKernel()), 0.0);
}

} // namespace
