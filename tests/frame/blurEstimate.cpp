// ornBlurEstimate, tested through the shared library.
#include "tests/frame/LoadedLibrary.h"
#include "tests/support/DrawnScene.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "tests/support/ProgressListener.h"
#include "tests/support/Threads.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using vel::test::blurredWith;
using vel::test::drawnScene;
using vel::test::Listener;
using vel::test::LoadedLibrary;

constexpr float kUntouched = -7.0f;

/// A kernel record of the host, with room after the values to detect overruns.
struct Kernel {
    Kernel(int32_t width, int32_t height)
        : values(static_cast<std::size_t>(std::max(width, 0) * std::max(height, 0)) + 8,
                 kUntouched),
          record{width, height, 71, 72, values.data()} {}

    cv::Mat matrix() { return cv::Mat(record.height, record.width, CV_32FC1, values.data()); }
    bool isUntouched() const {
        return std::all_of(values.begin(), values.end(), [](float v) { return v == kUntouched; });
    }
    std::vector<float> values;
    KernelRecord record;
};

class BlurEstimate : public ::testing::Test {
protected:
    int32_t run(const cv::Mat& image, Kernel& kernel, float strength = 0.0f,
                ProgressRecord* progress = nullptr) const {
        ProgressRecord silent{100, 100, nullptr, nullptr, 0};
        PlaneRecord record = recordOf(image);
        return blurEstimate(progress != nullptr ? progress : &silent, &record, &kernel.record,
                            strength);
    }
    static PlaneRecord recordOf(const cv::Mat& image) {
        return {image.depth() == CV_8U ? psC3U8 : psC3U16, image.data,
                static_cast<int32_t>(image.step), image.cols, image.rows};
    }
    cv::Mat createdKernel(int32_t type, float parameter) const {
        Kernel kernel(31, 31);
        EXPECT_EQ(createKernel(type, parameter, 0.0f, &kernel.record), VELORN_OK);
        return kernel.matrix().clone();
    }

    /// The text may end with one stale character.
    void expectText(const std::string& text) const {
        EXPECT_EQ(std::string(errorMessage()).substr(0, text.size()), text);
    }

    LoadedLibrary library;
    decltype(ornBlurEstimate)* blurEstimate = VELORN_FIND(library, ornBlurEstimate);
    decltype(ornCreateKernel)* createKernel = VELORN_FIND(library, ornCreateKernel);
    decltype(getErrMsg)* errorMessage = VELORN_FIND(library, getErrMsg);
};

cv::Mat softScene(cv::Size size = cv::Size(120, 100)) {
    const cv::Mat box(3, 3, CV_32FC1, cv::Scalar(1.0 / 9.0));
    return blurredWith(drawnScene(size, CV_8UC3), box);
}

bool sameBits(const std::vector<float>& a, const std::vector<float>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](float x, float y) { return x == y || (std::isnan(x) && std::isnan(y)); });
}

double correlation(const cv::Mat& a, const cv::Mat& b) {
    const cv::Mat x = a - cv::mean(a)[0];
    const cv::Mat y = b - cv::mean(b)[0];
    return x.dot(y) / std::sqrt(x.dot(x) * y.dot(y));
}

/// Largest correlation of two kernels of one size over shifts of up to two pixels.
double bestCorrelation(const cv::Mat& estimated, const cv::Mat& truth) {
    double best = -1.0;
    for (int dy = -2; dy <= 2; ++dy) {
        for (int dx = -2; dx <= 2; ++dx) {
            const cv::Mat move = (cv::Mat_<float>(2, 3) << 1, 0, dx, 0, 1, dy);
            cv::Mat moved;
            cv::warpAffine(estimated, moved, move, estimated.size(), cv::INTER_NEAREST);
            best = std::max(best, correlation(moved, truth));
        }
    }
    return best;
}

/// `kernel` in the middle of `side` by `side` zeros.
cv::Mat centred(const cv::Mat& kernel, int side) {
    const int x = (side - kernel.cols) / 2;
    const int y = (side - kernel.rows) / 2;
    cv::Mat out;
    cv::copyMakeBorder(kernel, out, y, side - kernel.rows - y, x, side - kernel.cols - x,
                       cv::BORDER_CONSTANT, cv::Scalar(0));
    return out;
}

// ---- results --------------------------------------------------------------------------------

TEST_F(BlurEstimate, FindsDiscsAndGaussians) {
    const cv::Mat sharp = drawnScene(cv::Size(260, 220), CV_8UC3);
    for (const auto& [type, parameter] : {std::pair{1, 3.0f}, {0, 1.5f}}) {
        const cv::Mat truth = createdKernel(type, parameter);
        Kernel kernel(13, 13);
        ASSERT_EQ(run(blurredWith(sharp, truth), kernel), VELORN_OK);
        EXPECT_GT(bestCorrelation(kernel.matrix(), centred(truth, 13)), 0.9) << type;
        EXPECT_NEAR(cv::sum(kernel.matrix())[0], 1.0, 1e-5);
        EXPECT_EQ(cv::countNonZero(kernel.matrix() < 0.0), 0);
    }
}

TEST_F(BlurEstimate, SixteenBitImagesGiveNearlyTheKernelOfTheirEightBits) {
    const cv::Mat eight = softScene();
    cv::Mat sixteen;
    eight.convertTo(sixteen, CV_16U, 128.0, 40.0);
    Kernel expected(5, 5);
    ASSERT_EQ(run(eight, expected), VELORN_OK);
    for (const int32_t format : {3, 0, 2, 7, -1}) {
        Kernel kernel(5, 5);
        ProgressRecord progress{100, 100, nullptr, nullptr, 0};
        PlaneRecord record = recordOf(sixteen);
        record.format = format;
        ASSERT_EQ(blurEstimate(&progress, &record, &kernel.record, 0.0f), VELORN_OK);
        EXPECT_GT(correlation(kernel.matrix(), expected.matrix()), 0.999) << format;
    }
}

TEST_F(BlurEstimate, KernelOfOnePixelIsOne) {
    Kernel kernel(1, 1);
    ASSERT_EQ(run(softScene(), kernel), VELORN_OK);
    EXPECT_FLOAT_EQ(kernel.values[0], 1.0f);
    EXPECT_EQ(kernel.values[1], kUntouched);
}

TEST_F(BlurEstimate, EvenSidesReceiveTheUpperLeftPartOfTheOddKernel) {
    const cv::Mat image = softScene();
    Kernel odd(5, 7);
    ASSERT_EQ(run(image, odd), VELORN_OK);
    for (const cv::Size size : {cv::Size(4, 6), cv::Size(5, 6), cv::Size(4, 7)}) {
        Kernel even(size.width, size.height);
        ASSERT_EQ(run(image, even), VELORN_OK);
        const cv::Mat part = odd.matrix()(cv::Rect(cv::Point(), size));
        EXPECT_EQ(cv::countNonZero(even.matrix() != part), 0) << size;
        EXPECT_LE(cv::sum(even.matrix())[0], 1.0 + 1e-6);
        EXPECT_EQ(even.values[static_cast<std::size_t>(size.area())], kUntouched);
        EXPECT_EQ(even.record.width, size.width);
        EXPECT_EQ(even.record.height, size.height);
    }
}

TEST_F(BlurEstimate, AnchorsAreUnchanged) {
    Kernel kernel(3, 3);
    ASSERT_EQ(run(softScene(), kernel), VELORN_OK);
    EXPECT_EQ(kernel.record.anchorX, 71);
    EXPECT_EQ(kernel.record.anchorY, 72);
    EXPECT_EQ(kernel.record.data, kernel.values.data());
}

TEST_F(BlurEstimate, StrengthIsLimitedAtBothEnds) {
    const cv::Mat image = softScene();
    const auto estimated = [&](float strength) {
        Kernel kernel(5, 5);
        EXPECT_EQ(run(image, kernel, strength), VELORN_OK);
        return kernel.values;
    };
    const float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> off = estimated(0.0f);
    const std::vector<float> most = estimated(2.0f);
    EXPECT_TRUE(sameBits(estimated(0.1f), off));
    EXPECT_TRUE(sameBits(estimated(std::nextafter(0.2f, 0.0f)), off));
    EXPECT_TRUE(sameBits(estimated(-5.0f), off));
    EXPECT_TRUE(sameBits(estimated(-infinity), off));
    EXPECT_TRUE(sameBits(estimated(std::numeric_limits<float>::quiet_NaN()), off));
    EXPECT_TRUE(sameBits(estimated(3.0f), most));
    EXPECT_TRUE(sameBits(estimated(infinity), most));
    EXPECT_FALSE(sameBits(most, off));
    EXPECT_FALSE(sameBits(estimated(0.5f), off));
    EXPECT_FALSE(sameBits(estimated(1.0f), most));
    EXPECT_FALSE(sameBits(estimated(1.0f), off));
}

TEST_F(BlurEstimate, FlatImageGivesAKernelOfNaNValuesAndSucceeds) {
    Kernel kernel(7, 5);
    ASSERT_EQ(run(cv::Mat(80, 90, CV_8UC3, cv::Scalar::all(128)), kernel), VELORN_OK);
    EXPECT_TRUE(std::all_of(kernel.values.begin(), kernel.values.begin() + 35,
                            [](float v) { return std::isnan(v); }));
    EXPECT_EQ(kernel.values[35], kUntouched);
    EXPECT_STREQ(errorMessage(), "");
}

TEST_F(BlurEstimate, SmallestImagesGiveKernelsOfNaN) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(2, 2), cv::Size(1, 7), cv::Size(7, 1)}) {
        for (const int type : {CV_8UC3, CV_16UC3}) {
            Kernel kernel(9, 5);
            EXPECT_EQ(run(cv::Mat(size, type, cv::Scalar::all(100)), kernel, 1.0f), VELORN_OK);
            EXPECT_TRUE(std::isnan(kernel.values[0])) << size;
        }
    }
}

TEST_F(BlurEstimate, KernelLargerThanTheImageIsNaN) {
    Kernel kernel(61, 1);
    EXPECT_EQ(run(softScene(cv::Size(40, 40)), kernel), VELORN_OK);
    EXPECT_TRUE(std::isnan(kernel.values[60]));
}

TEST_F(BlurEstimate, ResultDoesNotDependOnTheNumberOfThreads) {
    const cv::Mat image = softScene(cv::Size(180, 140));
    Kernel expected(7, 5);
    EXPECT_EQ(run(image, expected, 0.8f), VELORN_OK);
    vel::test::forThreadCounts([&] {
        Kernel kernel(7, 5);
        EXPECT_EQ(run(image, kernel, 0.8f), VELORN_OK);
        EXPECT_TRUE(sameBits(kernel.values, expected.values));
    });
}

TEST_F(BlurEstimate, StepAndStartMayBeOdd) {
    const cv::Mat eight = softScene();
    cv::Mat sixteen;
    eight.convertTo(sixteen, CV_16U, 128.0);
    for (const cv::Mat& image : {eight, sixteen}) {
        Kernel expected(5, 5);
        ASSERT_EQ(run(image, expected), VELORN_OK);
        const std::size_t rowBytes =
            image.total() / static_cast<std::size_t>(image.rows) * image.elemSize();
        const std::size_t step = rowBytes + 7;
        std::vector<unsigned char> pixels(step * static_cast<std::size_t>(image.rows) + 1);
        for (int y = 0; y < image.rows; ++y) {
            std::copy_n(image.ptr(y), rowBytes,
                        pixels.data() + 1 + step * static_cast<std::size_t>(y));
        }
        PlaneRecord moved = recordOf(image);
        moved.data = pixels.data() + 1;
        moved.step = static_cast<int32_t>(step);
        ProgressRecord silent{100, 100, nullptr, nullptr, 0};
        Kernel kernel(5, 5);
        ASSERT_EQ(blurEstimate(&silent, &moved, &kernel.record, 0.0f), VELORN_OK);
        EXPECT_TRUE(sameBits(kernel.values, expected.values));
    }
}

TEST_F(BlurEstimate, SourceIsUnchanged) {
    const cv::Mat image = softScene();
    const cv::Mat before = image.clone();
    Kernel kernel(5, 5);
    ASSERT_EQ(run(image, kernel, 1.0f), VELORN_OK);
    EXPECT_EQ(cv::norm(image, before, cv::NORM_INF), 0.0);
}

// ---- progress -------------------------------------------------------------------------------

TEST_F(BlurEstimate, ProgressNeverGoesBackAndEndsWithTheShareOfTheFinestLevel) {
    Listener listener;
    ProgressRecord progress = listener.record(100000, 1000000, 500);
    Kernel kernel(7, 7);
    ASSERT_EQ(run(softScene(), kernel, 0.0f, &progress), VELORN_OK);
    ASSERT_FALSE(listener.heard.empty());
    EXPECT_EQ(listener.heard.front(), 501);
    EXPECT_TRUE(std::is_sorted(listener.heard.begin(), listener.heard.end()));
    EXPECT_EQ(listener.heard.back(), progress.current);
    // Shares of 1/5 and 4/5, truncated.
    EXPECT_NEAR(progress.current, 100500, 2);
    EXPECT_EQ(std::set<int32_t>(listener.limits.begin(), listener.limits.end()),
              std::set<int32_t>{1000000});
}

TEST_F(BlurEstimate, ALevelAdvancesInNinthsOfItsShare) {
    // In an image this small the solver uses no row and therefore makes no progress of its own.
    Listener listener;
    ProgressRecord progress = listener.record(900, 10000, 0);
    Kernel kernel(3, 3);
    ASSERT_EQ(run(cv::Mat(9, 9, CV_8UC3, cv::Scalar::all(50)), kernel, 0.0f, &progress), VELORN_OK);
    // Every iteration makes one step each for edges, kernel and deconvolution. Solver and
    // deconvolution add a step for their parts: the solver without a callback, the deconvolution
    // with one for its only block. The last iteration has no deconvolution.
    const std::vector<int32_t> expected{1,   100, 300, 400, 500, // begin and first iteration
                                        600, 800, 900, 900,      // second
                                        900, 900, 900,           // third
                                        900};                    // end
    EXPECT_EQ(listener.heard, expected);
    EXPECT_EQ(progress.current, 900);
}

TEST_F(BlurEstimate, CallbackCannotCancel) {
    const cv::Mat image = softScene();
    Kernel expected(5, 5);
    ASSERT_EQ(run(image, expected), VELORN_OK);
    Listener listener;
    listener.cancelAt = 1;
    ProgressRecord progress = listener.record(1000, 1000);
    Kernel kernel(5, 5);
    EXPECT_EQ(run(image, kernel, 0.0f, &progress), VELORN_OK);
    EXPECT_GT(listener.heard.size(), 10u);
    EXPECT_TRUE(sameBits(kernel.values, expected.values));
}

TEST_F(BlurEstimate, WithoutCallbackOrUserDataTheResultIsTheSame) {
    const cv::Mat image = softScene();
    Listener listener;
    ProgressRecord audible = listener.record(1000, 1000);
    Kernel expected(5, 5);
    ASSERT_EQ(run(image, expected, 0.0f, &audible), VELORN_OK);
    const std::size_t calls = listener.heard.size();
    ProgressRecord withoutUserData = listener.record(1000, 1000, 40);
    withoutUserData.userData = nullptr;
    ProgressRecord withoutCallback = listener.record(1000, 1000, 40);
    withoutCallback.callback = nullptr;
    for (ProgressRecord* silent : {&withoutUserData, &withoutCallback}) {
        Kernel kernel(5, 5);
        EXPECT_EQ(run(image, kernel, 0.0f, silent), VELORN_OK);
        EXPECT_TRUE(sameBits(kernel.values, expected.values));
        EXPECT_EQ(silent->current, 40);
    }
    EXPECT_EQ(listener.heard.size(), calls);
}

TEST_F(BlurEstimate, ProgressEndsAtTheLimitAtMost) {
    Listener listener;
    ProgressRecord progress = listener.record(1000, 60, 10);
    Kernel kernel(5, 5);
    ASSERT_EQ(run(softScene(), kernel, 0.0f, &progress), VELORN_OK);
    EXPECT_EQ(progress.current, 60);
    EXPECT_EQ(listener.heard.back(), 60);
}

struct Reentry {
    decltype(ornBlurEstimate)* estimate;
    decltype(ornCreateKernel)* create;
    std::vector<int32_t> statuses;

    static int32_t callAgain(int32_t, int32_t, void* userData) {
        auto& self = *static_cast<Reentry*>(userData);
        float values[9] = {kUntouched};
        KernelRecord kernel{3, 3, 0, 0, values};
        self.statuses.push_back(self.estimate(nullptr, nullptr, nullptr, 0.0f));
        self.statuses.push_back(self.create(9, 1.0f, 1.0f, &kernel));
        EXPECT_EQ(values[0], kUntouched);
        return 1;
    }
};

TEST_F(BlurEstimate, CallsFromTheCallbackAreRefusedAndTheRunningCallContinues) {
    const cv::Mat image = softScene();
    Kernel expected(3, 3);
    ASSERT_EQ(run(image, expected), VELORN_OK);
    Reentry reentry{blurEstimate, createKernel, {}};
    ProgressRecord progress{1000, 1000, &Reentry::callAgain, &reentry, 0};
    Kernel kernel(3, 3);
    EXPECT_EQ(run(image, kernel, 0.0f, &progress), VELORN_OK);
    EXPECT_GT(reentry.statuses.size(), 10u);
    EXPECT_EQ(std::set<int32_t>(reentry.statuses.begin(), reentry.statuses.end()),
              std::set<int32_t>{VELORN_OK});
    EXPECT_TRUE(sameBits(kernel.values, expected.values));
}

/// Gives the kernel record another size and other memory in every callback.
struct RecordChanger {
    KernelRecord* record;
    std::vector<float> other = std::vector<float>(4, kUntouched);

    static int32_t callBack(int32_t, int32_t, void* userData) {
        auto& self = *static_cast<RecordChanger*>(userData);
        *self.record = {2, 2, 71, 72, self.other.data()};
        return 1;
    }
};

TEST_F(BlurEstimate, CallbackMayChangeTheKernelRecord) {
    const cv::Mat image = softScene();
    Kernel expected(5, 3);
    ASSERT_EQ(run(image, expected), VELORN_OK);
    Kernel kernel(5, 3);
    RecordChanger changer{&kernel.record};
    ProgressRecord progress{1000, 1000, &RecordChanger::callBack, &changer, 0};
    EXPECT_EQ(run(image, kernel, 0.0f, &progress), VELORN_OK);
    EXPECT_TRUE(sameBits(kernel.values, expected.values));
    EXPECT_EQ(changer.other, std::vector<float>(4, kUntouched));
}

// ---- failures -------------------------------------------------------------------------------

TEST_F(BlurEstimate, KernelWithASideBelowOneIsZeroedAndNotEstimated) {
    for (const auto& [width, height] : {std::pair{0, 5}, {5, 0}, {-1, 3}, {3, -9}, {0, 0}}) {
        Kernel kernel(width, height);
        EXPECT_EQ(run(softScene(), kernel), VELORN_OK);
        EXPECT_EQ(kernel.record.width, 0);
        EXPECT_EQ(kernel.record.height, 0);
        EXPECT_EQ(kernel.record.anchorX, 0);
        EXPECT_EQ(kernel.record.anchorY, 0);
        EXPECT_EQ(kernel.record.data, kernel.values.data());
        EXPECT_TRUE(kernel.isUntouched());
    }
    KernelRecord bare{0, 1, 2, 3, nullptr};
    EXPECT_EQ(blurEstimate(nullptr, nullptr, &bare, 0.0f), VELORN_OK);
    EXPECT_EQ(bare.anchorY, 0);
}

TEST_F(BlurEstimate, NullRecordsFailWithATextAndLeaveTheLibraryIdle) {
    const cv::Mat image = softScene(cv::Size(20, 20));
    PlaneRecord plane = recordOf(image);
    ProgressRecord progress{100, 100, nullptr, nullptr, 0};
    Kernel kernel(3, 3);
    EXPECT_EQ(blurEstimate(&progress, &plane, nullptr, 0.0f), VELORN_TEXT_FAILURE);
    expectText("ornBlurEstimate - kernel_p ==NULL");
    EXPECT_EQ(blurEstimate(nullptr, &plane, &kernel.record, 0.0f), VELORN_TEXT_FAILURE);
    expectText("ornBlurEstimate - progress_p ==NULL");
    EXPECT_EQ(blurEstimate(&progress, nullptr, &kernel.record, 0.0f), VELORN_TEXT_FAILURE);
    expectText("ornBlurEstimate - image_p ==NULL");
    EXPECT_TRUE(kernel.isUntouched());
    EXPECT_EQ(blurEstimate(&progress, &plane, &kernel.record, 0.0f), VELORN_OK);
    EXPECT_STREQ(errorMessage(), "");
}

TEST_F(BlurEstimate, NullDataFailsWithAText) {
    const cv::Mat image = softScene(cv::Size(20, 20));
    ProgressRecord progress{100, 100, nullptr, nullptr, 0};
    PlaneRecord plane = recordOf(image);
    KernelRecord withoutData{3, 3, 0, 0, nullptr};
    EXPECT_EQ(blurEstimate(&progress, &plane, &withoutData, 0.0f), VELORN_TEXT_FAILURE);
    expectText("ornBlurEstimate - kernel data ==NULL");
    Kernel kernel(3, 3);
    plane.data = nullptr;
    EXPECT_EQ(blurEstimate(&progress, &plane, &kernel.record, 0.0f), VELORN_TEXT_FAILURE);
    expectText("ornBlurEstimate - image data ==NULL");
    EXPECT_TRUE(kernel.isUntouched());
}

TEST_F(BlurEstimate, ImageWithoutPixelsFails) {
    const cv::Mat image = softScene(cv::Size(20, 20));
    ProgressRecord progress{100, 100, nullptr, nullptr, 0};
    for (const auto& [width, height] : {std::pair{0, 5}, {5, 0}, {-1, 5}, {5, -1}}) {
        PlaneRecord plane = recordOf(image);
        plane.width = width;
        plane.height = height;
        Kernel kernel(3, 3);
        EXPECT_EQ(blurEstimate(&progress, &plane, &kernel.record, 0.0f), VELORN_NO_PIXELS);
        EXPECT_TRUE(kernel.isUntouched());
    }
}

TEST_F(BlurEstimate, StepShorterThanARowFailsWithAText) {
    const cv::Mat image = softScene(cv::Size(20, 20));
    ProgressRecord progress{100, 100, nullptr, nullptr, 0};
    for (const int32_t step : {59, 0, -60}) {
        PlaneRecord plane = recordOf(image);
        plane.step = step;
        Kernel kernel(3, 3);
        EXPECT_EQ(blurEstimate(&progress, &plane, &kernel.record, 0.0f), VELORN_TEXT_FAILURE);
        expectText("ornBlurEstimate - step shorter than a row");
        EXPECT_TRUE(kernel.isUntouched());
        plane.height = 1;
        EXPECT_EQ(blurEstimate(&progress, &plane, &kernel.record, 0.0f), VELORN_OK);
    }
}

TEST_F(BlurEstimate, KernelsTooLargeToAllocateFailAndLeaveDataUnchangedAndTheLibraryIdle) {
    const cv::Mat image = softScene(cv::Size(40, 40));
    constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
    for (const auto& [width, height] : {std::pair{4001, 4001}, {kMost, kMost}}) {
        Kernel kernel(3, 3);
        kernel.record.width = width;
        kernel.record.height = height;
        EXPECT_EQ(run(image, kernel), VELORN_FAILURE);
        EXPECT_TRUE(kernel.isUntouched());
        EXPECT_STREQ(errorMessage(), "");
    }
    Kernel kernel(3, 3);
    EXPECT_EQ(run(image, kernel), VELORN_OK);
}

TEST_F(BlurEstimate, LibraryIsIdleAfterEveryOutcome) {
    Kernel kernel(3, 3);
    ProgressRecord progress{100, 100, nullptr, nullptr, 0};
    PlaneRecord nothing{psC3U8, nullptr, 0, 0, 0};
    EXPECT_EQ(blurEstimate(&progress, &nothing, &kernel.record, 0.0f), VELORN_NO_PIXELS);
    EXPECT_EQ(blurEstimate(&progress, &nothing, nullptr, 0.0f), VELORN_TEXT_FAILURE);
    EXPECT_EQ(createKernel(9, 1.0f, 1.0f, &kernel.record), VELORN_BAD_ARGUMENT);
}

} // namespace
