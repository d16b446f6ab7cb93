#include "hosts/command/commands/Presets.h"

#include "tests/support/BlurredPicture.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace {

using velorn::AnalyticBlur;
using velorn::RgbPixels;
using Bytes = std::vector<std::uint8_t>;

const velorn::BlurKernel kDisc = velorn::makeKernel({AnalyticBlur::Shape::Disc, 2.5f, 0.0f});

RgbPixels restored(const RgbPixels& picture, velorn::RestorationSettings settings) {
    settings.lambda = 20000.0f;
    return velorn::restore(picture, kDisc, settings, [](int, int) { return true; });
}

TEST(Presets, NamesAreUniqueAndTheStrengthIsNotSet) {
    std::set<std::string> names;
    for (const auto& preset : velorn::presets()) {
        EXPECT_TRUE(names.insert(preset.name).second) << preset.name;
        EXPECT_NE(std::string(preset.effect), "");
        EXPECT_EQ(preset.settings.lambda, 0.0f);
        EXPECT_TRUE(preset.settings.deconvolve);
    }
    EXPECT_EQ(names, std::set<std::string>({"crisp", "lens", "motion", "scan"}));
}

TEST(Presets, EachGivesADifferentPictureThatIsBetterThanTheBlurredOne) {
    const RgbPixels sharp = vel::test::drawnPicture(200, 150);
    const RgbPixels soft = vel::test::blurred(sharp, kDisc);
    const auto& truth = std::get<Bytes>(sharp.samples);
    const double before = vel::test::decibels(truth, std::get<Bytes>(soft.samples), 255.0);
    std::vector<Bytes> results{std::get<Bytes>(restored(soft, {}).samples)};
    for (const auto& preset : velorn::presets()) {
        Bytes result = std::get<Bytes>(restored(soft, preset.settings).samples);
        EXPECT_GT(vel::test::decibels(truth, result, 255.0), before + 2.0) << preset.name;
        EXPECT_EQ(std::ranges::find(results, result), results.end()) << preset.name;
        results.push_back(std::move(result));
    }
}

} // namespace
