#include "RestorationMeasure.h"

#include "BlurKernel.h"
#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>

namespace {

using vel::test::blurred;
using vel::test::drawnPicture;
using velorn::RgbPixels;
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

TEST(RestorationMeasure, EmptyPicturesAreTheWorst) {
    EXPECT_EQ(unsharpness({40, 30, Bytes(3600, 77)}), 1.0);
    EXPECT_EQ(unsharpness({1, 1, Bytes(3)}), 1.0);
}

} // namespace
