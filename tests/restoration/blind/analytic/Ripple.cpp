#include "restoration/blind/analytic/Ripple.h"

#include "restoration/blind/analytic/blurPatterns.h"

#include <cmath>
#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr std::size_t kLength = 200;
constexpr int kSide = 512;
constexpr double kFloor = 1e-6;

/// Of a picture whose power falls as 1 / f^2, with noise, blurred by `pattern`.
SpectralProfile profileOf(const BlurPattern& pattern) {
    SpectralProfile profile(kLength);
    for (std::size_t i = 0; i < kLength; ++i) {
        const double step = std::max(static_cast<double>(i), 0.5);
        const double power = pattern.powers[i] / (step * step) + kFloor;
        profile.add(i, std::log(power), power);
        profile.add(i, std::log(power), power);
    }
    profile.finish();
    return profile;
}

TEST(RippleFit, RipplesOfABlurHaveTheHeightOfItsPattern) {
    const RippleFit fit(profileOf(strokePattern(15.0, kLength, kSide)), kFloor);
    const RippleMatch match = fit.of(strokePattern(15.0, kLength, kSide));
    EXPECT_NEAR(match.height, 1.0, 0.35);
    for (const double other : {8.0, 12.0, 18.0, 24.0}) {
        EXPECT_LT(fit.of(strokePattern(other, kLength, kSide)).evidence, 0.6 * match.evidence)
            << other;
    }
}

TEST(RippleFit, SmoothFallsHaveNone) {
    BlurPattern smooth = strokePattern(15.0, kLength, kSide);
    smooth.powers.assign(kLength, 1.0);
    const RippleFit rippled(profileOf(strokePattern(15.0, kLength, kSide)), kFloor);
    const double evidence = rippled.of(strokePattern(15.0, kLength, kSide)).evidence;
    const RippleFit fit(profileOf(smooth), kFloor);
    EXPECT_LT(fit.of(strokePattern(15.0, kLength, kSide)).evidence, 0.01 * evidence);
}

} // namespace
} // namespace restoration
