#include "hosts/command/options/Presets.h"

#include "tests/support/BlurredPicture.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace {

namespace api = velorn::api;
using velorn::RgbPixels;
using Bytes = std::vector<std::uint8_t>;

const api::Kernel kDisc = api::Kernel::of(VELORN_BLUR_DISC, 2.5f);

Bytes restored(const RgbPixels& picture, VelornRestoreSettings settings) {
    Bytes result = std::get<Bytes>(picture.samples);
    const VelornPicture view = api::pictureOf(result.data(), picture.width, picture.height, 3);
    settings.strength = 20000.0f;
    api::restore(view, view, {kDisc}, settings);
    return result;
}

TEST(Presets, NamesAreUniqueAndTheStrengthIsNotSet) {
    std::set<std::string> names;
    for (const auto& preset : velorn::presets()) {
        EXPECT_TRUE(names.insert(preset.name).second) << preset.name;
        EXPECT_NE(std::string(preset.effect), "");
        VelornRestoreSettings settings = api::restoreSettings();
        preset.applyTo(settings);
        EXPECT_EQ(settings.strength, VELORN_AUTOMATIC);
    }
    EXPECT_EQ(names, std::set<std::string>({"crisp", "lens", "motion", "scan"}));
}

TEST(Presets, EachGivesADifferentPictureThatIsBetterThanTheBlurredOne) {
    const RgbPixels sharp = vel::test::drawnPicture(200, 150);
    const RgbPixels soft = vel::test::blurred(sharp, velorn::blurKernelOf(kDisc));
    const auto& truth = std::get<Bytes>(sharp.samples);
    const double before = vel::test::decibels(truth, std::get<Bytes>(soft.samples), 255.0);
    std::vector<Bytes> results{restored(soft, api::restoreSettings())};
    for (const auto& preset : velorn::presets()) {
        VelornRestoreSettings settings = api::restoreSettings();
        preset.applyTo(settings);
        Bytes result = restored(soft, settings);
        EXPECT_GT(vel::test::decibels(truth, result, 255.0), before + 2.0) << preset.name;
        EXPECT_EQ(std::ranges::find(results, result), results.end()) << preset.name;
        results.push_back(std::move(result));
    }
}

} // namespace
