#include "hosts/command/blind/KernelOrientation.h"

#include "hosts/command/restoration/Restoration.h"
#include "SampleBlurs.h"
#include "SamplePictures.h"
#include "tests/support/BlurredPicture.h"

#include <gtest/gtest.h>

namespace {

using velorn::betterOrientation;
using velorn::BlurKernel;
using velorn::RgbPixels;
using velorn::rotatedBy180;

/// A hook that fades from one end to the other.
const BlurKernel kHook{5, 5, {0.20f, 0.0f, 0.0f,  0.0f,  0.0f, //
                              0.20f, 0.0f, 0.0f,  0.0f,  0.0f, //
                              0.15f, 0.0f, 0.0f,  0.0f,  0.0f, //
                              0.15f, 0.0f, 0.0f,  0.0f,  0.0f, //
                              0.10f, 0.1f, 0.05f, 0.05f, 0.0f}};

bool proceed(int, int) {
    return true;
}

velorn::RestorationSettings settings() {
    velorn::RestorationSettings settings;
    settings.lambda = 5000.0f;
    return settings;
}

TEST(KernelOrientation, OrientationOfTheBlurIsChosenFromEitherStart) {
    const RgbPixels soft = vel::test::blurred(vel::test::drawnPicture(180, 140), kHook);
    const auto fromTrue = betterOrientation(soft, kHook, proceed);
    const auto fromRotated = betterOrientation(soft, rotatedBy180(kHook), proceed);
    ASSERT_TRUE(fromTrue && fromRotated);
    EXPECT_EQ(fromTrue->weights, kHook.weights);
    EXPECT_EQ(fromRotated->weights, kHook.weights);
}

TEST(KernelOrientation, NineOfTenChoicesAreTheOrientationThatRestoresBetter) {
    int cases = 0;
    int right = 0;
    for (const auto& view : velorn::tools::drawnViews(280, 220)) {
        for (const auto& blur : velorn::tools::unevenBlurs()) {
            const auto photograph = velorn::tools::photographOf(view.colours, blur.kernel, 1.0, 5);
            const auto decibelsWith = [&](const BlurKernel& kernel) {
                return photograph.decibelsOf(
                    velorn::restore(photograph.taken, kernel, settings(), proceed));
            };
            const BlurKernel turned = rotatedBy180(blur.kernel);
            const auto chosen = betterOrientation(photograph.taken, turned, proceed);
            ASSERT_TRUE(chosen.has_value());
            const BlurKernel other = rotatedBy180(*chosen);
            right += decibelsWith(*chosen) > decibelsWith(other) ? 1 : 0;
            ++cases;
        }
    }
    EXPECT_GE(cases, 10);
    EXPECT_GE(10 * right, 9 * cases) << right << " of " << cases;
}

TEST(KernelOrientation, ProgressCoversBothRestorationsAndCancelsEither) {
    const RgbPixels soft = vel::test::drawnPicture(90, 70);
    int last = 0;
    ASSERT_TRUE(betterOrientation(soft, kHook, [&](int current, int limit) {
        EXPECT_LE(current, limit);
        EXPECT_GE(current, last);
        last = current;
        return true;
    }));
    EXPECT_GT(last, 500'000);
    EXPECT_FALSE(betterOrientation(soft, kHook, [](int, int) { return false; }));
    EXPECT_FALSE(betterOrientation(soft, kHook, [](int done, int) { return done < 700'000; }));
}

} // namespace
