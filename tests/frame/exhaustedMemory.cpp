// Guarded calls that run out of memory, tested through the shared library. Each check runs in a
// process of its own, where the heap has no free blocks of earlier tests: it takes every large
// block from the system, and a limit of the address space makes that fail.
#if defined(__GLIBC__)

#include "tests/frame/DeblurCalls.h"
#include "tests/support/AddressSpaceLimit.h"
#include "tests/support/DrawnScene.h"

#include <cstdlib>
#include <optional>

namespace {

using namespace vel::test;

/// Less than any plane of a tile, more than all small blocks.
constexpr std::size_t kRoom = std::size_t{96} << 10;

/// From its callback of a given number (counted from 1) on, the process gets no large block.
struct Exhaustion {
    explicit Exhaustion(int callback) : m_callback(callback) {}

    ProgressRecord record() { return {100, 100, &Exhaustion::callBack, this, 0}; }
    bool happened() const { return m_calls >= m_callback; }

private:
    static int32_t callBack(int32_t, int32_t, void* userData) {
        auto& self = *static_cast<Exhaustion*>(userData);
        if (++self.m_calls == self.m_callback) {
            self.m_limit.emplace(kRoom);
        }
        return 1;
    }

    int m_callback;
    int m_calls = 0;
    std::optional<AddressSpaceLimit> m_limit;
};

class ExhaustedMemoryDeathTest : public DeblurCalls {
protected:
    void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "the sanitizer needs address space of its own";
#endif
        testing::FLAGS_gtest_death_test_style = "threadsafe";
    }

    template <class Check>
    static void inAFreshProcess(const Check& check) {
        const auto failed = [&] {
            check();
            return HasFailure();
        };
        EXPECT_EXIT(std::_Exit(failed() ? 1 : 0), testing::ExitedWithCode(0), "");
    }

    int32_t runUntil(int callback, const cv::Mat& source, cv::Mat& target,
                     const DeblurSettings& settings) {
        Exhaustion exhaustion(callback);
        ProgressRecord progress = exhaustion.record();
        const int32_t status = run(source, target, sides(3, 3), settings, &progress);
        EXPECT_TRUE(exhaustion.happened());
        return status;
    }
};

TEST_F(ExhaustedMemoryDeathTest, DeblurringKeepsTheMergedRowsAndLeavesTheLibraryIdle) {
    inAFreshProcess([&] {
        const cv::Mat source = noise(cv::Size(600, 1200), CV_8UC3, 255);
        DeblurSettings edges;
        edges.edgeGain = 1.5f;
        cv::Mat expected = flat(source.size(), 77);
        EXPECT_EQ(run(source, expected, sides(3, 3), edges), VELORN_OK);

        // Two tiles across: the first row of tiles is merged before callback 6.
        cv::Mat target = flat(source.size(), 77);
        EXPECT_EQ(runUntil(6, source, target, edges), VELORN_FAILURE);
        EXPECT_STREQ(errorMessage(), "");
        EXPECT_EQ(largestDifference(target.rowRange(0, 300), expected.rowRange(0, 300)), 0);
        EXPECT_EQ(largestDifference(target.rowRange(900, 1200), flat(cv::Size(600, 300), 77)), 0);

        EXPECT_EQ(run(source, target, sides(3, 3), edges), VELORN_OK);
        EXPECT_EQ(largestDifference(target, expected), 0);
    });
}

TEST_F(ExhaustedMemoryDeathTest, DetailImagesAreAllocatedEvenIfTheStageDoesNotRun) {
    inAFreshProcess([&] {
        const cv::Mat source = noise(cv::Size(300, 270), CV_8UC3, 255);
        cv::Mat target = flat(source.size(), 77);
        // With all stages off, these images are the first large blocks. They are scratch images,
        // whose failure has another status than that of the planes of a tile.
        EXPECT_EQ(runUntil(1, source, target, {}), VELORN_NO_PIXELS);
        EXPECT_EQ(largestDifference(target, flat(source.size(), 77)), 0);
        EXPECT_EQ(run(source, target, sides(3, 3), {}), VELORN_OK);
        EXPECT_EQ(largestDifference(target, source), 0);
    });
}

TEST_F(ExhaustedMemoryDeathTest, EstimationLeavesTheKernelUnchangedAndTheLibraryIdle) {
    auto* const blurEstimate = VELORN_FIND(library, ornBlurEstimate);
    inAFreshProcess([&] {
        const cv::Mat box(3, 3, CV_32FC1, cv::Scalar(1.0 / 9.0));
        const cv::Mat picture = blurredWith(drawnScene(cv::Size(640, 520), CV_8UC3), box);
        PlaneRecord image{psC3U8, picture.data, static_cast<int32_t>(picture.step), picture.cols,
                          picture.rows};
        const auto estimate = [&](std::vector<float>& values, ProgressRecord progress) {
            KernelRecord kernel{7, 7, 0, 0, values.data()};
            return blurEstimate(&progress, &image, &kernel, 0.5f);
        };
        const ProgressRecord silent{100, 100, nullptr, nullptr, 0};
        std::vector<float> expected(49);
        EXPECT_EQ(estimate(expected, silent), VELORN_OK);

        const std::vector<float> before(49, -7.0f);
        for (const int callback : {1, 2, 5, 9}) {
            std::vector<float> values = before;
            Exhaustion exhaustion(callback);
            EXPECT_EQ(estimate(values, exhaustion.record()), VELORN_FAILURE) << callback;
            EXPECT_TRUE(exhaustion.happened());
            EXPECT_EQ(values, before);
            EXPECT_STREQ(errorMessage(), "");
        }
        std::vector<float> values = before;
        EXPECT_EQ(estimate(values, silent), VELORN_OK);
        EXPECT_EQ(values, expected);
    });
}

} // namespace

#endif
