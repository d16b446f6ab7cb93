#include "restoration/secondpass/remainingNoise.h"

#include "tests/restoration/deconvolution/CircularScene.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(RemainingNoise, WithoutBlurAllCoefficientsShrinkAlike) {
    for (const float weight : {0.01f, 0.3f, 2.0f}) {
        const float expected = 1 / ((1 + weight) * (1 + weight));
        for (const float variance : remainingNoise({1, 1, {1.0f}}, weight)) {
            EXPECT_NEAR(variance, expected, 1e-4f * expected);
        }
    }
}

TEST(RemainingNoise, BlurAlongRowsChangesHorizontalFrequenciesOnly) {
    const float weight = 0.1f;
    const DctVariances found = remainingNoise({3, 1, {0.25f, 0.5f, 0.25f}}, weight);
    for (std::size_t k = 8; k < found.size(); ++k) {
        EXPECT_NEAR(found[k], found[k % 8], 1e-3f);
    }
    // Means pass; frequencies that the blur halves are amplified; the highest is lost.
    EXPECT_NEAR(found[0], 1 / (1.1f * 1.1f), 0.1f);
    EXPECT_GT(found[4], 1.5f * found[0]);
    EXPECT_LT(found[7], 0.7f * found[4]);
}

} // namespace
} // namespace restoration
