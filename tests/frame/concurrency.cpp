// The display and scale exports on several threads at once and beside a guarded call, tested
// through the shared library.
#include "tests/frame/DeblurCalls.h"
#include "tests/support/IccProfiles.h"

#include <future>
#include <thread>

namespace {

using namespace vel::test;

constexpr int kWidth = 90;
constexpr int kHeight = 70;

/// The results of one round of all display and scale exports.
struct Shown {
    std::vector<std::uint8_t> plain = std::vector<std::uint8_t>(4 * kWidth * kHeight);
    std::vector<std::uint8_t> scaled = plain;
    std::vector<std::uint8_t> managed = plain;
    std::vector<std::uint16_t> raised = std::vector<std::uint16_t>(kWidth * kHeight);
    std::vector<std::uint8_t> lowered = std::vector<std::uint8_t>(kWidth * kHeight);

    bool operator==(const Shown&) const = default;
};

class Concurrency : public DeblurCalls {
protected:
    /// Calls every display and scale export with `picture`.
    Shown show(const cv::Mat& picture) const {
        Shown shown;
        const auto step = static_cast<int32_t>(picture.step);
        PlaneRecord image{psC3U8, picture.data, step, kWidth, kHeight};
        PSProfilesRecord profiles{profile.data(), static_cast<int32_t>(profile.size()), nullptr, 0};
        const auto onto = [&](std::vector<std::uint8_t>& display, float scale) {
            EXPECT_EQ(showImage(&image, display.data(), 4 * kWidth, kWidth, kHeight, scale),
                      VELORN_OK);
        };
        onto(shown.plain, 1.0f);
        onto(shown.scaled, 0.7f);
        EXPECT_EQ(
            showManaged(&profiles, &image, shown.managed.data(), 4 * kWidth, kWidth, kHeight, 1.3f),
            VELORN_OK);
        EXPECT_EQ(toU15(picture.data, step, kWidth, kHeight, shown.raised.data(), 2 * kWidth), 1);
        EXPECT_EQ(
            toU8(shown.raised.data(), 2 * kWidth, kWidth, kHeight, shown.lowered.data(), kWidth),
            1);
        return shown;
    }

    decltype(PSImage2QImage)* showImage = VELORN_FIND(library, PSImage2QImage);
    decltype(PSImageICC2QImage)* showManaged = VELORN_FIND(library, PSImageICC2QImage);
    decltype(psC1U8toU15)* toU15 = VELORN_FIND(library, psC1U8toU15);
    decltype(psC1U15toU8)* toU8 = VELORN_FIND(library, psC1U15toU8);
    const ProfileBytes profile = wideGamutProfile();
};

TEST_F(Concurrency, DisplayAndScaleExportsRunOnTwoThreadsAtOnce) {
    constexpr int kRounds = 20;
    const cv::Mat pictures[] = {noise(cv::Size(kWidth, kHeight), CV_8UC3, 255, 1),
                                noise(cv::Size(kWidth, kHeight), CV_8UC3, 255, 2)};
    const Shown expected[] = {show(pictures[0]), show(pictures[1])};
    EXPECT_FALSE(expected[0] == expected[1]);
    const auto repeat = [&](int which) {
        for (int round = 0; round < kRounds; ++round) {
            EXPECT_TRUE(show(pictures[which]) == expected[which]) << "round " << round;
        }
    };
    std::thread other(repeat, 1);
    repeat(0);
    other.join();
}

/// A callback that waits in its third call until the display thread has finished a round.
struct Rendezvous {
    // Under Wine, a wait on an atomic was seen to miss its notification.
    std::promise<void> callRuns;
    std::promise<void> roundIsDone;
    int calls = 0;

    static int32_t callBack(int32_t, int32_t, void* userData) {
        auto& self = *static_cast<Rendezvous*>(userData);
        if (++self.calls == 3) {
            self.callRuns.set_value();
            self.roundIsDone.get_future().wait();
        }
        return 1;
    }
};

TEST_F(Concurrency, DisplayAndScaleExportsRunBesideAGuardedCall) {
    const cv::Mat picture = noise(cv::Size(kWidth, kHeight), CV_8UC3, 255);
    const Shown expected = show(picture);
    const cv::Mat source = noise(cv::Size(300, 280), CV_8UC3, 255);
    DeblurSettings settings;
    settings.edgeGain = 1.5f;
    settings.detailGain = 0.3f;
    cv::Mat alone(source.size(), CV_8UC3);
    ASSERT_EQ(run(source, alone, sides(3, 3), settings), VELORN_OK);

    Rendezvous rendezvous;
    std::thread display([&] {
        rendezvous.callRuns.get_future().wait();
        EXPECT_TRUE(show(picture) == expected);
        rendezvous.roundIsDone.set_value();
        EXPECT_TRUE(show(picture) == expected);
    });
    ProgressRecord progress{100, 100, &Rendezvous::callBack, &rendezvous, 0};
    cv::Mat target(source.size(), CV_8UC3);
    EXPECT_EQ(run(source, target, sides(3, 3), settings, &progress), VELORN_OK);
    display.join();
    EXPECT_EQ(largestDifference(alone, target), 0);
    EXPECT_STREQ(errorMessage(), "");
}

} // namespace
