// ornDeblurSharpen, tested through the shared library.
#include "tests/frame/DeblurCalls.h"
#include "tests/support/ProgressListener.h"
#include "tests/support/Threads.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace vel::test;

class DeblurSharpen : public DeblurCalls {};

/// Filled shapes in colour.
cv::Mat scene(cv::Size size) {
    cv::Mat image(size, CV_8UC3, cv::Scalar(120, 130, 140));
    cv::RNG random(11);
    for (int i = 0; i < 60; ++i) {
        const cv::Point centre(random.uniform(0, size.width), random.uniform(0, size.height));
        const cv::Scalar colour(random.uniform(20, 235), random.uniform(20, 235),
                                random.uniform(20, 235));
        if (i % 2 == 0) {
            cv::circle(image, centre, random.uniform(3, 40), colour, cv::FILLED, cv::LINE_AA);
        } else {
            cv::rectangle(image, centre, centre + cv::Point(random.uniform(2, 60), 25), colour,
                          cv::FILLED);
        }
    }
    return image;
}

cv::Mat blurred(const cv::Mat& sharp, const KernelRecord& kernel) {
    const cv::Mat shape(kernel.height, kernel.width, CV_32FC1, kernel.data);
    cv::Mat flipped;
    cv::flip(shape, flipped, -1);
    cv::Mat out;
    cv::filter2D(sharp, out, -1, flipped, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
    return out;
}

TEST_F(DeblurSharpen, ClosedGatesReproduceAnEightBitImage) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(2, 3), cv::Size(64, 48), cv::Size(257, 3),
                                cv::Size(300, 280), cv::Size(1025, 10), cv::Size(1100, 600)}) {
        const cv::Mat source = noise(size, CV_8UC3, 255);
        cv::Mat target(size, CV_8UC3, cv::Scalar::all(77));
        EXPECT_EQ(run(source, target, sides(5, 5), {}), VELORN_OK);
        EXPECT_EQ(largestDifference(source, target), 0) << size;
    }
}

TEST_F(DeblurSharpen, ClosedGatesReproduceASixteenBitImageWithinTheRoundingOfTheTwist) {
    for (const int highest : {32768, 65535}) {
        const cv::Mat source = noise(cv::Size(600, 540), CV_16UC3, highest);
        cv::Mat target(source.size(), CV_16UC3, cv::Scalar::all(77));
        EXPECT_EQ(run(source, target, sides(9, 3), {}), VELORN_OK);
        EXPECT_LE(largestDifference(source, target), highest == 32768 ? 2 : 4);
    }
}

TEST_F(DeblurSharpen, EdgeSettingsOfExactlyOnePointZeroOneDoNotRunTheStage) {
    const cv::Mat source = scene(cv::Size(200, 200));
    cv::Mat target(source.size(), CV_8UC3);
    DeblurSettings settings;
    settings.edgeSlope = settings.edgeGain = 1.01f;
    EXPECT_EQ(run(source, target, sides(1, 1), settings), VELORN_OK);
    EXPECT_EQ(largestDifference(source, target), 0);
}

TEST_F(DeblurSharpen, EdgeGainAndEdgeSlopeEachRunTheStage) {
    const cv::Mat source = scene(cv::Size(200, 200));
    for (const auto& [slope, gain] : {std::pair{0.0f, 1.5f}, {1.5f, kNoSharpening}}) {
        cv::Mat target(source.size(), CV_8UC3);
        DeblurSettings settings;
        settings.edgeSlope = slope;
        settings.edgeGain = gain;
        EXPECT_EQ(run(source, target, sides(1, 1), settings), VELORN_OK);
        EXPECT_GT(largestDifference(source, target), 5) << slope << ' ' << gain;
    }
}

TEST_F(DeblurSharpen, NegativeDetailSettingsAloneDoNotRunTheDetailStage) {
    const cv::Mat source = scene(cv::Size(200, 200));
    cv::Mat target(source.size(), CV_8UC3);
    DeblurSettings settings;
    for (const auto& [gain, gamma] : {std::pair{-0.5f, 0.0f}, std::pair{-0.995f, 0.0f},
                                      std::pair{0.0f, -0.5f}, std::pair{-2.0f, -2.0f}}) {
        settings.detailGain = gain;
        settings.detailGamma = gamma;
        EXPECT_EQ(run(source, target, sides(1, 1), settings), VELORN_OK);
        EXPECT_EQ(largestDifference(source, target), 0) << gain << ' ' << gamma;
    }
}

/// Grey with weak noise: an image of nothing but fine detail.
cv::Mat texture(cv::Size size) {
    cv::Mat grey = noise(size, CV_16UC1, 1600);
    grey += 15000;
    cv::Mat image;
    cv::cvtColor(grey, image, cv::COLOR_GRAY2RGB);
    return image;
}

TEST_F(DeblurSharpen, DetailSettingsOfExactlyOneHundredthDoNotRunTheDetailStage) {
    const cv::Mat source = texture(cv::Size(200, 200));
    const auto change = [&](float gain, float gamma) {
        cv::Mat target(source.size(), CV_16UC3);
        DeblurSettings settings;
        settings.detailGain = gain;
        settings.detailGamma = gamma;
        EXPECT_EQ(run(source, target, sides(1, 1), settings), VELORN_OK);
        return largestDifference(source, target);
    };
    constexpr int kRoundingOfTheTwist = 2;
    EXPECT_LE(change(0.01f, 0.01f), kRoundingOfTheTwist);
    EXPECT_GT(change(std::nextafter(0.01f, 1.0f), 0.01f), 5);
    EXPECT_GT(change(0.01f, std::nextafter(0.01f, 1.0f)), 5);
}

double spread(const cv::Mat& image) {
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(image, mean, deviation);
    return deviation[0];
}

TEST_F(DeblurSharpen, DetailGainAndGammaEachStrengthenTexture) {
    const cv::Mat source = texture(cv::Size(300, 270));
    const auto strengthened = [&](float gain, float gamma) {
        cv::Mat target(source.size(), CV_16UC3);
        DeblurSettings settings;
        settings.detailGain = gain;
        settings.detailGamma = gamma;
        EXPECT_EQ(run(source, target, sides(1, 1), settings), VELORN_OK);
        return spread(target) / spread(source);
    };
    EXPECT_GT(strengthened(0.02f, 0.0f), 1.03);
    EXPECT_LT(strengthened(0.02f, 0.0f), 1.08);
    EXPECT_GT(strengthened(0.5f, 0.0f), 2.0);
    EXPECT_LT(strengthened(0.5f, 0.0f), 2.6);
    EXPECT_GT(strengthened(0.0f, 0.5f), 1.2);
    // A gamma above 0.01 also runs the stage for negative gains. Near -1 only the base layer
    // remains.
    EXPECT_LT(strengthened(-0.5f, 0.02f), 0.7);
    EXPECT_LT(strengthened(-0.995f, 0.02f), 0.3);
}

TEST_F(DeblurSharpen, DetailStageDoesNotChangeColour) {
    const cv::Mat source = scene(cv::Size(220, 200));
    cv::Mat target(source.size(), CV_8UC3);
    DeblurSettings settings;
    settings.detailGain = 0.3f;
    ASSERT_EQ(run(source, target, sides(1, 1), settings), VELORN_OK);
    EXPECT_GT(largestDifference(source, target), 3);
    // A change of luminance is the same in all three channels, unless one of them saturates.
    cv::Mat change;
    cv::subtract(target, source, change, cv::noArray(), CV_16S);
    int compared = 0;
    for (int y = 0; y < source.rows; ++y) {
        for (int x = 0; x < source.cols; ++x) {
            const auto pixel = target.at<cv::Vec3b>(y, x);
            const auto moved = change.at<cv::Vec3s>(y, x);
            const auto inside = [](int value) { return value > 0 && value < 255; };
            if (inside(pixel[0]) && inside(pixel[1]) && inside(pixel[2])) {
                ++compared;
                ASSERT_LE(std::abs(moved[0] - moved[1]), 1);
                ASSERT_LE(std::abs(moved[1] - moved[2]), 1);
            }
        }
    }
    EXPECT_GT(compared, 10000);
}

TEST_F(DeblurSharpen, RestoresABlurredPictureByFourDecibels) {
    const cv::Mat sharp = scene(cv::Size(400, 300));
    const KernelRecord kernel = disc(3.0f);
    const cv::Mat soft = blurred(sharp, kernel);
    for (const int depth : {CV_8U, CV_16U}) {
        cv::Mat source;
        soft.convertTo(source, depth, depth == CV_8U ? 1.0 : 128.0);
        cv::Mat target(source.size(), source.type());
        DeblurSettings settings;
        settings.deconvolve = 1;
        settings.deconvLambda = 30000.0f;
        ASSERT_EQ(run(source, target, kernel, settings), VELORN_OK);
        cv::Mat restored;
        target.convertTo(restored, CV_8U, depth == CV_8U ? 1.0 : 1.0 / 128.0);
        EXPECT_GT(cv::PSNR(sharp, restored), cv::PSNR(sharp, soft) + 4.0);
    }
}

TEST_F(DeblurSharpen, ResultDoesNotDependOnTheNumberOfThreads) {
    const cv::Mat source = blurred(scene(cv::Size(700, 560)), disc(2.0f));
    DeblurSettings settings;
    settings.deconvolve = 1;
    settings.limitStrength = 0.6f;
    settings.edgeSlope = 2.0f;
    settings.detailGain = 0.4f;
    settings.detailGamma = 0.2f;
    cv::Mat expected(source.size(), CV_8UC3);
    EXPECT_EQ(run(source, expected, disc(2.0f), settings), VELORN_OK);
    forThreadCounts([&] {
        cv::Mat target(source.size(), CV_8UC3);
        EXPECT_EQ(run(source, target, disc(2.0f), settings), VELORN_OK);
        EXPECT_EQ(largestDifference(expected, target), 0);
    });
}

TEST_F(DeblurSharpen, ProgressAdvancesStepByStepAndEndsAtTheExactTotal) {
    const cv::Mat source = noise(cv::Size(100, 80), CV_8UC3, 255);
    cv::Mat target(source.size(), CV_8UC3);
    Listener listener;
    ProgressRecord progress = listener.record(200, 1000, 10);
    EXPECT_EQ(run(source, target, sides(3, 3), {}, &progress), VELORN_OK);
    // One tile: 10 + 1, base + 2, two steps of 200 / 2 + 1 units, then total + base.
    EXPECT_EQ(listener.heard, (std::vector<int32_t>{11, 13, 114, 215, 211}));
    EXPECT_EQ(listener.limits, std::vector<int32_t>(5, 1000));
    EXPECT_EQ(progress.current, 211);
}

TEST_F(DeblurSharpen, ProgressNeverPassesItsLimit) {
    const cv::Mat source = noise(cv::Size(1200, 700), CV_8UC3, 255);
    cv::Mat target(source.size(), CV_8UC3);
    Listener listener;
    ProgressRecord progress = listener.record(100, 100);
    EXPECT_EQ(run(source, target, sides(3, 3), {}, &progress), VELORN_OK);
    ASSERT_GT(listener.heard.size(), 8u);
    for (const int32_t current : listener.heard) {
        EXPECT_LE(current, 100);
    }
    EXPECT_EQ(progress.current, 100);
}

TEST_F(DeblurSharpen, NullUserDataDisablesCallbackAndCancellation) {
    const cv::Mat source = noise(cv::Size(100, 80), CV_8UC3, 255);
    cv::Mat target(source.size(), CV_8UC3);
    static int calls = 0;
    ProgressRecord progress{100, 100,
                            [](int32_t, int32_t, void*) -> int32_t {
                                ++calls;
                                return 0;
                            },
                            nullptr, 0};
    EXPECT_EQ(run(source, target, sides(3, 3), {}, &progress), VELORN_OK);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(progress.current, 100);
}

TEST_F(DeblurSharpen, CallbackCannotCancelInItsFirstTwoCalls) {
    const cv::Mat source = noise(cv::Size(100, 80), CV_8UC3, 255);
    for (const std::size_t cancelAt : {1u, 2u}) {
        cv::Mat target(source.size(), CV_8UC3);
        Listener listener;
        listener.cancelAt = cancelAt;
        ProgressRecord progress = listener.record(100, 100);
        EXPECT_EQ(run(source, target, sides(3, 3), {}, &progress), VELORN_OK);
        EXPECT_EQ(listener.heard.size(), 5u);
    }
}

TEST_F(DeblurSharpen, CancellingInsideATileDoesNotStoreIt) {
    const cv::Mat source = noise(cv::Size(100, 80), CV_8UC3, 255);
    cv::Mat target = flat(source.size(), 77);
    Listener listener;
    listener.cancelAt = 3;
    ProgressRecord progress = listener.record(100, 100);
    EXPECT_EQ(run(source, target, sides(3, 3), {}, &progress), VELORN_CANCELLED);
    EXPECT_EQ(listener.heard.size(), 3u);
    EXPECT_EQ(largestDifference(target, flat(source.size(), 77)), 0);
    EXPECT_STREQ(errorMessage(), "");
    // The next call runs.
    EXPECT_EQ(run(source, target, sides(3, 3), {}), VELORN_OK);
    EXPECT_EQ(largestDifference(source, target), 0);
}

TEST_F(DeblurSharpen, CancellingLaterKeepsTheMergedRows) {
    const cv::Mat source = noise(cv::Size(600, 1200), CV_8UC3, 255);
    cv::Mat target = flat(source.size(), 77);
    Listener listener;
    // Two tiles across: call 6 follows the first row of tiles.
    listener.cancelAt = 8;
    ProgressRecord progress = listener.record(100, 100);
    EXPECT_EQ(run(source, target, sides(3, 3), {}, &progress), VELORN_CANCELLED);
    EXPECT_EQ(largestDifference(source.rowRange(0, 300), target.rowRange(0, 300)), 0);
    EXPECT_NE(largestDifference(source.rowRange(900, 1200), target.rowRange(900, 1200)), 0);
}

TEST_F(DeblurSharpen, CancellingAfterTheLastTileLeavesACompleteImage) {
    const cv::Mat source = noise(cv::Size(100, 80), CV_8UC3, 255);
    for (const std::size_t cancelAt : {4u, 5u}) {
        cv::Mat target(source.size(), CV_8UC3);
        Listener listener;
        listener.cancelAt = cancelAt;
        ProgressRecord progress = listener.record(100, 100);
        EXPECT_EQ(run(source, target, sides(3, 3), {}, &progress), VELORN_CANCELLED);
        EXPECT_EQ(largestDifference(source, target), 0);
    }
}

TEST_F(DeblurSharpen, CallsFromInsideTheCallbackAreRefusedBeforeTheirArgumentsAreChecked) {
    const cv::Mat source = noise(cv::Size(100, 80), CV_8UC3, 255);
    cv::Mat target(source.size(), CV_8UC3);
    struct Nested {
        decltype(ornCreateKernel)* createKernel;
        decltype(ornDeblurSharpen)* deblurSharpen;
        std::vector<int32_t> answers;
        float data[9];
    } nested{createKernel, deblurSharpen, {}, {}};
    ProgressRecord progress{100, 100,
                            [](int32_t, int32_t, void* userData) -> int32_t {
                                auto& self = *static_cast<Nested*>(userData);
                                KernelRecord record{-1, -1, -1, -1, self.data};
                                self.answers.push_back(self.createKernel(1, 1.0f, 0.0f, &record));
                                EXPECT_EQ(record.width, -1);
                                record.data = nullptr;
                                self.answers.push_back(self.createKernel(9, 1.0f, 0.0f, &record));
                                self.answers.push_back(self.createKernel(0, 1.0f, 0.0f, nullptr));
                                self.answers.push_back(self.deblurSharpen(
                                    nullptr, nullptr, nullptr, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0));
                                return 1;
                            },
                            &nested, 0};
    EXPECT_EQ(run(source, target, sides(3, 3), {}, &progress), VELORN_OK);
    EXPECT_EQ(nested.answers, std::vector<int32_t>(20, VELORN_OK));
    EXPECT_EQ(largestDifference(source, target), 0);
}

TEST_F(DeblurSharpen, ProgressCountsEveryTileOfTheWalk) {
    // 700 columns in tiles of 1024 with a margin of 338: the plan counts two tiles, the walk visits
    // three, at 0, 332 and 352.
    const cv::Mat source = noise(cv::Size(700, 20), CV_8UC3, 255);
    cv::Mat target(source.size(), CV_8UC3);
    Listener listener;
    ProgressRecord progress = listener.record(1001, 100000);
    EXPECT_EQ(run(source, target, sides(161, 3), {}, &progress), VELORN_OK);
    // 1001 / 2 planned tiles = 500 units, 251 per step; three tiles of two steps each.
    EXPECT_EQ(listener.heard, (std::vector<int32_t>{1, 3, 254, 505, 756, 1007, 1258, 1509, 1002}));
}

TEST_F(DeblurSharpen, ProgressSaturatesAtTheEndsOfItsRange) {
    const cv::Mat source = noise(cv::Size(20, 20), CV_8UC3, 255);
    cv::Mat target(source.size(), CV_8UC3);
    constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();
    constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
    Listener listener;
    ProgressRecord progress = listener.record(kHighest, kHighest, kHighest - 1);
    EXPECT_EQ(run(source, target, sides(3, 3), {}, &progress), VELORN_OK);
    EXPECT_EQ(progress.current, kHighest);
    progress = listener.record(kLowest, 100, -5);
    EXPECT_EQ(run(source, target, sides(3, 3), {}, &progress), VELORN_OK);
    for (const int32_t current : listener.heard) {
        EXPECT_TRUE(current <= 100 || current >= kHighest - 1) << current;
    }
    EXPECT_EQ(progress.current, kLowest);
}

TEST_F(DeblurSharpen, OversizedKernelFailsAfterItsFirstTile) {
    const cv::Mat source = noise(cv::Size(250, 200), CV_8UC3, 255);
    cv::Mat target = flat(source.size(), 77);
    Listener listener;
    ProgressRecord progress = listener.record(100, 1000);
    EXPECT_EQ(run(source, target, sides(60, 3), {}, &progress), VELORN_TILE_GAP);
    EXPECT_EQ(listener.heard.size(), 3u);
}

TEST_F(DeblurSharpen, OversizedKernelsFailWithDeconvolutionToo) {
    const cv::Mat source = noise(cv::Size(250, 200), CV_8UC3, 255);
    std::vector<float> values(300 * 301, 1.0f / (300 * 301));
    DeblurSettings settings;
    settings.deconvolve = 1;
    for (const auto& [size, status] : {std::pair{cv::Size(52, 3), VELORN_TILE_GAP},
                                       std::pair{cv::Size(129, 3), VELORN_NO_PIXELS},
                                       std::pair{cv::Size(300, 301), VELORN_NO_PIXELS}}) {
        cv::Mat target(source.size(), CV_8UC3);
        const KernelRecord kernel{size.width, size.height, 0, 0, values.data()};
        EXPECT_EQ(run(source, target, kernel, settings), status) << size;
    }
}

TEST_F(DeblurSharpen, SixteenBitImagesMayHaveOddStepsAndAddresses) {
    const cv::Size size(10, 8);
    const cv::Mat source = noise(size, CV_16UC3, 32768);
    const int32_t step = 61;
    std::vector<unsigned char> in(1 + 61 * 8);
    std::vector<unsigned char> out(1 + 61 * 8);
    for (int y = 0; y < size.height; ++y) {
        std::copy_n(source.ptr(y), 60, in.data() + 1 + step * y);
    }
    ImageRecord image{psC3U16, in.data() + 1, step, out.data() + 1, step, size.width, size.height};
    KernelRecord kernel = sides(3, 3);
    ProgressRecord progress{100, 100, nullptr, nullptr, 0};
    EXPECT_EQ(call(&progress, &image, &kernel, {}), VELORN_OK);
    cv::Mat target(size, CV_16UC3);
    for (int y = 0; y < size.height; ++y) {
        std::copy_n(out.data() + 1 + step * y, 60, target.ptr(y));
    }
    EXPECT_LE(largestDifference(source, target), 2);
}

/// The mean distance by which `restored` leaves the range of the 5 by 5 neighbourhoods of `source`.
double overshoot(const cv::Mat& source, const cv::Mat& restored) {
    const cv::Mat square = cv::Mat::ones(5, 5, CV_8UC1);
    cv::Mat lowest, highest, below, above;
    cv::erode(source, lowest, square);
    cv::dilate(source, highest, square);
    // Differences saturate at 0.
    cv::subtract(lowest, restored, below);
    cv::subtract(restored, highest, above);
    return cv::mean(below)[0] + cv::mean(above)[0];
}

/// Single bright pixels on a ground of grey: the limiter works on luminance, and its bounds follow
/// edges and lines, but not specks.
cv::Mat specks(cv::Size size) {
    cv::Mat image = flat(size, 100);
    for (int y = 10; y < size.height; y += 20) {
        for (int x = 10; x < size.width; x += 20) {
            image.at<cv::Vec3b>(y, x) = cv::Vec3b::all(255);
        }
    }
    return image;
}

TEST_F(DeblurSharpen, LimiterReducesOvershoot) {
    const KernelRecord kernel = disc(2.0f);
    const cv::Mat source = blurred(specks(cv::Size(200, 200)), kernel);
    const auto overshootAt = [&](float limitStrength) {
        DeblurSettings settings;
        settings.deconvolve = 1;
        settings.limitStrength = limitStrength;
        cv::Mat target(source.size(), CV_8UC3);
        EXPECT_EQ(run(source, target, kernel, settings), VELORN_OK);
        return overshoot(source, target);
    };
    const double unlimited = overshootAt(0.0f);
    const double half = overshootAt(0.5f);
    const double full = overshootAt(1.0f);
    EXPECT_GT(unlimited, 0.2);
    EXPECT_LT(half, 0.8 * unlimited);
    EXPECT_LT(full, 0.1 * unlimited);
    EXPECT_EQ(overshootAt(0.09f), unlimited);
}

TEST_F(DeblurSharpen, KernelThatLeavesNoUsefulTileFailsWithAGap) {
    const cv::Mat source = noise(cv::Size(250, 200), CV_8UC3, 255);
    for (const int32_t side : {52, 53, 56, 57, 60}) {
        cv::Mat target = flat(source.size(), 77);
        EXPECT_EQ(run(source, target, sides(side, 3), {}), VELORN_TILE_GAP) << side;
        EXPECT_STREQ(errorMessage(), "");
        EXPECT_EQ(largestDifference(target, flat(target.size(), 77)), 0);
    }
}

TEST_F(DeblurSharpen, KernelWhoseMarginExceedsTheTileFailsWithoutPixels) {
    const cv::Mat source = noise(cv::Size(250, 200), CV_8UC3, 255);
    for (const int32_t side : {300, 2000, std::numeric_limits<int32_t>::max()}) {
        cv::Mat target = flat(source.size(), 77);
        EXPECT_EQ(run(source, target, sides(side, 3), {}), VELORN_NO_PIXELS) << side;
    }
}

TEST_F(DeblurSharpen, LargestDocumentedKernelWorks) {
    const cv::Mat source = noise(cv::Size(30, 24), CV_8UC3, 255);
    cv::Mat target = flat(source.size(), 77);
    EXPECT_EQ(run(source, target, sides(51, 51), {}), VELORN_OK);
    EXPECT_EQ(largestDifference(source, target), 0);
}

TEST_F(DeblurSharpen, ImageWithoutPixelsFails) {
    unsigned char pixel[6] = {};
    ProgressRecord progress{100, 100, nullptr, nullptr, 0};
    KernelRecord kernel = sides(3, 3);
    for (const cv::Size size :
         {cv::Size(0, 10), cv::Size(10, 0), cv::Size(0, 0), cv::Size(-3, 5), cv::Size(5, -3)}) {
        ImageRecord image{psC3U8, pixel, 3, pixel, 3, size.width, size.height};
        EXPECT_EQ(call(&progress, &image, &kernel, {}), VELORN_NO_PIXELS) << size;
    }
}

TEST_F(DeblurSharpen, StepMustHoldARowOfItsPixelType) {
    for (const auto& [type, shortest] : {std::pair{CV_8UC3, 60}, {CV_16UC3, 120}}) {
        const cv::Mat pixels(10, 20, type, cv::Scalar::all(100));
        cv::Mat target(10, 20, type);
        ProgressRecord progress{100, 100, nullptr, nullptr, 0};
        KernelRecord kernel = sides(3, 3);
        const int32_t format = type == CV_8UC3 ? psC3U8 : psC3U16;
        const auto statusOf = [&](int32_t sourceStep, int32_t targetStep, int32_t height) {
            ImageRecord image{format, pixels.data, sourceStep, target.data, targetStep, 20, height};
            return call(&progress, &image, &kernel, {});
        };
        EXPECT_EQ(statusOf(shortest, shortest, 10), VELORN_OK);
        EXPECT_EQ(statusOf(shortest - 1, shortest, 10), VELORN_TEXT_FAILURE);
        EXPECT_EQ(statusOf(shortest, shortest - 1, 10), VELORN_TEXT_FAILURE);
        EXPECT_EQ(statusOf(0, -1, 1), VELORN_OK) << "a single row needs no step";
    }
}

class UnusableRecords : public DeblurSharpen {
protected:
    void expectText(const std::string& text, int32_t deconvolve = 0) {
        ProgressRecord progress{100, 100, nullptr, nullptr, 0};
        DeblurSettings settings;
        settings.deconvolve = deconvolve;
        EXPECT_EQ(call(&progress, imagePointer, kernelPointer, settings), VELORN_TEXT_FAILURE);
        // The text may end with one stale character.
        EXPECT_EQ(std::string(errorMessage()).substr(0, text.size()), text);
    }

    const cv::Mat source = noise(cv::Size(20, 10), CV_8UC3, 255);
    cv::Mat target = flat(source.size(), 77);
    ImageRecord image{psC3U8, source.data, 60, target.data, 60, 20, 10};
    KernelRecord kernel = disc(1.0f);
    ImageRecord* imagePointer = &image;
    KernelRecord* kernelPointer = &kernel;
};

TEST_F(UnusableRecords, NullImageFails) {
    imagePointer = nullptr;
    expectText("ornDeblurSharpen - image_p ==NULL");
}

TEST_F(UnusableRecords, NullKernelFails) {
    kernelPointer = nullptr;
    expectText("ornDeblurSharpen - kernel_p ==NULL");
}

TEST_F(UnusableRecords, NullPixelsFail) {
    image.source = nullptr;
    expectText("ornDeblurSharpen - source or target ==NULL");
    image.source = source.data;
    image.target = nullptr;
    expectText("ornDeblurSharpen - source or target ==NULL");
}

TEST_F(UnusableRecords, StepsShorterThanARowFail) {
    image.sourceStep = 59;
    expectText("ornDeblurSharpen - step shorter than a row");
    image.sourceStep = 60;
    image.targetStep = -60;
    expectText("ornDeblurSharpen - step shorter than a row");
}

TEST_F(UnusableRecords, KernelWithoutDataFailsOnlyWithDeconvolution) {
    kernel.data = nullptr;
    expectText("ornDeblurSharpen - kernel data ==NULL", 1);
    EXPECT_EQ(run(source, target, kernel, {}), VELORN_OK);
}

TEST_F(UnusableRecords, KernelOfSideZeroFailsOnlyWithDeconvolution) {
    kernel.width = 0;
    expectText("ornDeblurSharpen - kernel without elements", 1);
    EXPECT_EQ(run(source, target, kernel, {}), VELORN_OK);
    kernel.width = -1;
    expectText("ornDeblurSharpen - kernel without elements");
}

TEST_F(DeblurSharpen, NaNAndInfiniteSettingsAreLegal) {
    const cv::Mat source = blurred(scene(cv::Size(150, 120)), disc(2.0f));
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float odd : {std::nanf(""), infinity, -infinity, 0.0f, -1.0f, 1e38f, 1e-38f}) {
        cv::Mat target(source.size(), CV_8UC3);
        DeblurSettings settings;
        settings.deconvolve = 1;
        settings.deconvLambda = settings.deconvAlpha = settings.limitStrength = odd;
        settings.edgeRadius = settings.edgeSlope = settings.edgeFloor = odd;
        settings.edgeGain = 2.0f;
        settings.detailGain = odd;
        settings.detailGamma = 0.5f;
        EXPECT_EQ(run(source, target, disc(2.0f), settings), VELORN_OK) << odd;
        settings.detailGain = 0.5f;
        settings.detailGamma = odd;
        EXPECT_EQ(run(source, target, disc(2.0f), settings), VELORN_OK) << odd;
    }
}

TEST_F(DeblurSharpen, KernelOfNaNIsLegal) {
    const cv::Mat source = scene(cv::Size(150, 120));
    cv::Mat target(source.size(), CV_8UC3);
    std::vector<float> values(9, std::nanf(""));
    DeblurSettings settings;
    settings.deconvolve = 1;
    settings.limitStrength = 0.5f;
    settings.edgeGain = 2.0f;
    settings.detailGain = 0.5f;
    EXPECT_EQ(run(source, target, {3, 3, 1, 1, values.data()}, settings), VELORN_OK);
}

TEST_F(DeblurSharpen, PaddingOfTheTargetRowsIsUnchanged) {
    const cv::Mat source = noise(cv::Size(31, 20), CV_8UC3, 255);
    cv::Mat buffer(20, 150, CV_8UC1, cv::Scalar(9));
    cv::Mat target(20, 31, CV_8UC3, buffer.data + 3, buffer.step);
    EXPECT_EQ(run(source, target, sides(3, 3), {}), VELORN_OK);
    EXPECT_EQ(largestDifference(source, target), 0);
    EXPECT_EQ(cv::countNonZero(buffer.colRange(0, 3) != 9), 0);
    EXPECT_EQ(cv::countNonZero(buffer.colRange(96, 150) != 9), 0);
}

} // namespace
