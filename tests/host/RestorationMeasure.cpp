#include "RestorationMeasure.h"

#include "BlurKernel.h"
#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>

namespace {

using vel::test::blurred;
using vel::test::drawnPicture;
using velorn::RgbPixels;
using velorn::roughness;
using velorn::unsharpness;
using Bytes = std::vector<std::uint8_t>;

TEST(RestorationMeasure, BlurRaisesTheUnsharpness) {
    const RgbPixels sharp = drawnPicture(160, 120);
    const auto disc = velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 3.0f, 0.0f});
    EXPECT_GT(unsharpness(blurred(sharp, disc)), 1.2 * unsharpness(sharp));
}

TEST(RestorationMeasure, RipplesInCalmAreasRaiseTheUnsharpness) {
    const RgbPixels sharp = drawnPicture(160, 120);
    RgbPixels rippled = sharp;
    auto& samples = std::get<Bytes>(rippled.samples);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::uint8_t>(samples[i] + (i / 6) % 2 * 8);
    }
    EXPECT_GT(unsharpness(rippled), unsharpness(sharp));
}

TEST(RestorationMeasure, ContrastDoesNotMatter) {
    RgbPixels strong{40, 30, Bytes(3600)};
    RgbPixels weak = strong;
    for (std::size_t i = 0; i < 3600; ++i) {
        const std::size_t column = i / 3 % 40;
        std::get<Bytes>(strong.samples)[i] = column % 8 == 0 ? 200 : 0;
        std::get<Bytes>(weak.samples)[i] = column % 8 == 0 ? 20 : 0;
    }
    EXPECT_NEAR(unsharpness(strong), unsharpness(weak), 1e-6);
}

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

TEST(RestorationMeasure, EmptyPicturesAreUnsharpAndNotRough) {
    EXPECT_EQ(unsharpness({40, 30, Bytes(3600, 77)}), 1.0);
    EXPECT_EQ(unsharpness({1, 1, Bytes(3)}), 1.0);
    EXPECT_EQ(roughness({1, 1, Bytes(3)}), 0.0);
}

} // namespace
