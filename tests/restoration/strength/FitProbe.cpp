#include "restoration/strength/FitProbe.h"

#include "restoration/failures/Failure.h"
#include "restoration/strength/fitRows.h"
#include "tests/restoration/strength/blurredPicture.h"
#include "tests/support/EachTarget.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

using test::unevenKernel;

constexpr int kSide = 64;
constexpr float kAlpha = 0.8f;

/// A patch of a blurred scene whose pixels are all known and looked at, without the ring.
Patch patchOf(const Kernel& kernel) {
    const test::BlurredPicture picture(test::circularScene(kSide - kernel.largerSide() + 1), kernel,
                                       {2.0});
    const int window = kSide - kernel.largerSide() + 1;
    Patch patch;
    TileLoader(picture.reader(), kSide, {}).load({0, 0, window, window}, patch.tile);
    patch.kept = {0, 0, window, window};
    return patch;
}

Fit fitOf(const Patch& patch, const BlurSpectrum& blur, float strength, std::uint64_t seed = 1) {
    const FitProbe::Model model(blur);
    ProbeScratch scratch(blur.side());
    FitProbe probe(patch, 0, model, seed, scratch, Cancellation());
    return probe.measure({strength, kAlpha}, scratch, Cancellation());
}

TEST(FitProbe, DivergenceOfVeryHighStrengthsCountsNearlyAllPixels) {
    const Kernel kernel = unevenKernel(3, 3);
    const Patch patch = patchOf(kernel);
    const Fit fit = fitOf(patch, BlurSpectrum(kernel, kSide), 1e9f);
    const auto pixels = static_cast<double>(fit.pixels);
    EXPECT_EQ(fit.pixels, 62u * 62u);
    EXPECT_NEAR(fit.divergence / pixels, 1.0, 0.1);
    EXPECT_LT(fit.residual / pixels, 0.2);
}

TEST(FitProbe, DivergenceIsTheSumOfThatOfSinglePixels) {
    // Without a blur all frequencies have the same weight, and pixels can be measured alone.
    const Kernel point = unevenKernel(1, 1);
    const BlurSpectrum blur(point, kSide);
    Patch patch = patchOf(point);
    const Fit fit = fitOf(patch, blur, 500.0f);
    double sum = 0.0;
    double count = 0.0;
    for (int y = 0; y < kSide; y += 4) {
        for (int x = 0; x < kSide; x += 4) {
            patch.kept = {x, y, 1, 1};
            sum += fitOf(patch, blur, 500.0f).divergence;
            ++count;
        }
    }
    const double single = sum / count;
    EXPECT_GT(single, 0.05);
    EXPECT_LT(single, 0.95);
    EXPECT_NEAR(fit.divergence / static_cast<double>(fit.pixels), single, 0.15 * single);
}

TEST(FitProbe, StrongerRestorationsFollowThePlaneMoreClosely) {
    const Kernel kernel = unevenKernel(5, 5);
    const BlurSpectrum blur(kernel, kSide);
    const Patch patch = patchOf(kernel);
    Fit weaker = fitOf(patch, blur, 100.0f);
    for (const float strength : {1000.0f, 10000.0f, 100000.0f}) {
        const Fit stronger = fitOf(patch, blur, strength);
        EXPECT_LT(stronger.residual, weaker.residual);
        EXPECT_GT(stronger.divergence, weaker.divergence);
        weaker = stronger;
    }
}

TEST(FitProbe, UnknownPixelsDoNotCount) {
    const Kernel kernel = unevenKernel(3, 3);
    const BlurSpectrum blur(kernel, kSide);
    Patch patch = patchOf(kernel);
    std::fill_n(patch.tile.known.row(20) + 10, 30, std::uint8_t{0});
    EXPECT_EQ(fitOf(patch, blur, 1000.0f).pixels, 62u * 62u - 30u);
    patch.kept = {10, 20, 30, 1};
    const Fit nothing = fitOf(patch, blur, 1000.0f);
    EXPECT_EQ(nothing.pixels, 0u);
    EXPECT_EQ(nothing.residual, 0.0);
}

TEST(FitProbe, CancelledCallFails) {
    const Kernel kernel = unevenKernel(3, 3);
    const BlurSpectrum blur(kernel, kSide);
    const Patch patch = patchOf(kernel);
    const FitProbe::Model model(blur);
    ProbeScratch scratch(kSide);
    FitProbe probe(patch, 0, model, 1, scratch, Cancellation());
    Cancellation cancellation;
    cancellation.request();
    EXPECT_THROW(probe.measure({1000.0f, kAlpha}, scratch, cancellation), Failure);
}

TEST(FitRows, AllVariantsGiveTheBitsOfPlainLoops) {
    std::vector<float> a(96);
    std::vector<float> b(96);
    std::vector<float> signs(96);
    std::mt19937 random(4);
    for (std::size_t i = 0; i < a.size(); ++i) {
        a[i] = static_cast<float>(random() % 1000) / 1000.0f;
        b[i] = static_cast<float>(random() % 1000) / 1000.0f;
        signs[i] = static_cast<float>(random() % 3) - 1.0f;
    }
    double product = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        product += static_cast<double>(a[i]) * static_cast<double>(b[i]);
    }
    double first = 0.0;
    vel::test::forEachTarget([&] {
        const double dot = dotRow(a.data(), b.data(), a.size());
        EXPECT_NEAR(dot, product, 1e-12);
        first = first == 0.0 ? dot : first;
        EXPECT_EQ(dot, first);
        std::vector<float> disturbed(a.size());
        std::vector<float> difference(a.size());
        std::vector<float> scaled = a;
        disturbRow(a.data(), signs.data(), 0.25f, disturbed.data(), a.size());
        subtractKept(a.data(), b.data(), signs.data(), difference.data(), a.size());
        multiplyRow(b.data(), scaled.data(), a.size());
        for (std::size_t i = 0; i < a.size(); ++i) {
            EXPECT_EQ(disturbed[i], a[i] + 0.25f * signs[i]);
            EXPECT_EQ(difference[i], signs[i] != 0.0f ? a[i] - b[i] : 0.0f);
            EXPECT_EQ(scaled[i], a[i] * b[i]);
        }
    });
}

} // namespace
} // namespace restoration
