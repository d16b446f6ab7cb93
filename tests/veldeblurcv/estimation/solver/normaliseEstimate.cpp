#include "velimproclib/veldeblurcv/estimation/solver/normaliseEstimate.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numeric>
#include <random>

namespace {

using vel::normaliseEstimate;

using Floats = cv::Mat_<float>;

TEST(NormaliseEstimate, EntriesAtTheFloorKeepHalfOfItAndThoseBelowBecomeZero) {
    // 0.5 of 1.0 is exact, so an entry can equal the threshold.
    cv::Mat kernel = (Floats(1, 5) << 1.0f, 0.5f, std::nextafter(0.5f, 0.0f), 0.0f, -3.0f);
    normaliseEstimate(kernel, 0.5f);
    EXPECT_EQ(kernel.at<float>(0), 0.75f);
    EXPECT_EQ(kernel.at<float>(1), 0.25f);
    EXPECT_EQ(kernel.at<float>(2), 0.0f);
    EXPECT_EQ(kernel.at<float>(3), 0.0f);
    EXPECT_EQ(kernel.at<float>(4), 0.0f);
}

TEST(NormaliseEstimate, ScaleIsTheReciprocalOfTheSumRoundedToSingle) {
    // Without a floor only the scale remains. Division would give other floats.
    cv::Mat kernel = (Floats(1, 2) << 6.0f, 1.0f);
    normaliseEstimate(kernel, 0.0f);
    const auto scale = static_cast<float>(1.0 / 7.0);
    EXPECT_EQ(kernel.at<float>(0), 6.0f * scale);
    EXPECT_EQ(kernel.at<float>(1), scale);
    EXPECT_NE(kernel.at<float>(0), 6.0f / 7.0f);
}

TEST(NormaliseEstimate, SumsToOneWithoutNegativeEntries) {
    std::mt19937 random(65);
    std::uniform_real_distribution<float> value(-1.0f, 1.0f);
    for (int side = 1; side <= 31; side += 2) {
        Floats entries(side, side);
        std::generate(entries.begin(), entries.end(), [&] { return value(random); });
        entries(0, 0) = 0.7f;
        cv::Mat kernel = entries;
        normaliseEstimate(kernel, 0.05f);
        EXPECT_GE(*std::min_element(entries.begin(), entries.end()), 0.0f);
        EXPECT_NEAR(std::accumulate(entries.begin(), entries.end(), 0.0), 1.0, 1e-5);
    }
}

TEST(NormaliseEstimate, WithoutAPositiveEntryEverythingIsNotANumber) {
    for (const float level : {0.0f, -1.0f}) {
        cv::Mat kernel(3, 3, CV_32FC1, cv::Scalar(level));
        normaliseEstimate(kernel, 0.05f);
        EXPECT_TRUE(std::all_of(kernel.begin<float>(), kernel.end<float>(),
                                [](float entry) { return std::isnan(entry); }));
    }
}

} // namespace
