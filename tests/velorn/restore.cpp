#include "tests/velorn/failure.h"
#include "tests/velorn/Restoration.h"
#include "tests/velorn/Scene.h"

#include <chrono>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <limits>
#include <thread>
#ifdef __SSE__
#include <xmmintrin.h>
#endif

namespace velorntest {
namespace {

constexpr Layout kColours{.width = 200, .height = 150};

TEST(Restore, BringsThePictureCloserToTheScene) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 3.0f);
    for (const VelornSamples samples :
         {VELORN_SAMPLES_U8, VELORN_SAMPLES_U16, VELORN_SAMPLES_F32}) {
        Layout layout = kColours;
        layout.samples = samples;
        HostPicture source = scenePicture(layout, kernel.get());
        HostPicture target = restored(source, {kernel.get()});
        EXPECT_LT(distanceFromScene(target), 0.7 * distanceFromScene(source));
    }
}

TEST(Restore, NullSettingsAreTheDefaults) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_GAUSSIAN, 1.5f);
    HostPicture source = scenePicture(kColours, kernel.get());
    HostPicture expected = restored(source, {kernel.get()});
    HostPicture target(kColours);
    const VelornPicture from = source.view();
    const VelornPicture to = target.view();
    const VelornKernel* const kernels = kernel.get();
    EXPECT_EQ(velornRestore(&from, &to, &kernels, 1, nullptr, nullptr), VELORN_STATUS_OK);
    EXPECT_EQ(target.pixels(), expected.pixels());
}

TEST(Restore, ReportTellsWhatWasUsed) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 2.0f);
    HostPicture source = scenePicture(kColours, kernel.get());
    HostPicture target(kColours);
    VelornRestoreSettings settings = defaultSettings();
    settings.strength = 1234.0f;
    settings.chromaStrength = 77.0f;
    settings.alpha = 0.75f;
    settings.limit = 0.25f;
    settings.noise = 2.5f;
    settings.light = VELORN_LIGHT_DISPLAY;
    VelornRestoreReport report{};
    report.size = sizeof report;
    const VelornPicture from = source.view();
    const VelornPicture to = target.view();
    const VelornKernel* const kernels = kernel.get();
    ASSERT_EQ(velornRestore(&from, &to, &kernels, 1, &settings, &report), VELORN_STATUS_OK);
    EXPECT_EQ(report.size, sizeof report);
    EXPECT_EQ(report.noise, 2.5f);
    EXPECT_EQ(report.strength, 1234.0f);
    EXPECT_EQ(report.chromaStrength, 77.0f);
    EXPECT_EQ(report.alpha, 0.75f);
    EXPECT_EQ(report.limit, 0.25f);
    EXPECT_EQ(report.light, VELORN_LIGHT_DISPLAY);
    EXPECT_GE(report.tiles, 1);
    EXPECT_GE(report.secondsTotal, report.secondsTiles);
    EXPECT_GT(report.secondsTiles, 0.0);
}

TEST(Restore, ValuesOfTheReportAsSettingsGiveTheSameResult) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture source = scenePicture(kColours, kernel.get());
    HostPicture target(kColours);
    VelornRestoreReport report{};
    report.size = sizeof report;
    const VelornPicture from = source.view();
    const VelornPicture to = target.view();
    const VelornKernel* const kernels = kernel.get();
    ASSERT_EQ(velornRestore(&from, &to, &kernels, 1, nullptr, &report), VELORN_STATUS_OK);
    VelornRestoreSettings settings = defaultSettings();
    settings.noise = report.noise;
    settings.strength = report.strength;
    settings.chromaStrength = report.chromaStrength;
    settings.alpha = report.alpha;
    settings.limit = report.limit;
    settings.light = report.light;
    EXPECT_EQ(restored(source, {kernel.get()}, settings).pixels(), target.pixels());
}

TEST(Restore, ReportOfACallWithoutKernelsHasNoStrength) {
    HostPicture source = scenePicture(kColours, nullptr);
    HostPicture target(kColours);
    VelornRestoreReport report{};
    report.size = sizeof report;
    report.strength = 5.0f;
    const VelornPicture from = source.view();
    const VelornPicture to = target.view();
    ASSERT_EQ(velornRestore(&from, &to, nullptr, 0, nullptr, &report), VELORN_STATUS_OK);
    EXPECT_EQ(report.strength, 0.0f);
    EXPECT_EQ(report.chromaStrength, 0.0f);
}

TEST(Restore, WithoutKernelsAndStagesThePictureStays) {
    HostPicture source = scenePicture(kColours, nullptr);
    HostPicture target = restored(source, {});
    EXPECT_EQ(target.pixels(), source.pixels());
}

TEST(Restore, AlphaIsCopied) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 2.0f);
    for (const int channels : {2, 3, 4}) {
        Layout layout{.width = 90, .height = 70, .channels = channels, .hasAlpha = true};
        HostPicture source = scenePicture(layout, kernel.get());
        layout.samples = VELORN_SAMPLES_U16;
        HostPicture target = restored(source, {kernel.get()}, defaultSettings(), layout);
        for (int y = 0; y < layout.height; ++y) {
            for (int x = 0; x < layout.width; ++x) {
                ASSERT_EQ(target.get(x, y, channels - 1), source.get(x, y, channels - 1));
            }
        }
    }
}

TEST(Restore, LayoutOfPicturesDoesNotMatter) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_MOTION, 7.0f, 30.0f);
    Layout layout{.width = 131, .height = 77};
    HostPicture source = scenePicture(layout, kernel.get());
    HostPicture expected = restored(source, {kernel.get()});
    Layout odd = layout;
    odd.padding = 5;
    odd.isUpsideDown = true;
    odd.offset = 3;
    HostPicture same = scenePicture(odd, kernel.get());
    const std::vector<std::uint8_t> before = same.bytes();
    odd.padding = 11;
    EXPECT_EQ(restored(same, {kernel.get()}, defaultSettings(), odd).pixels(), expected.pixels());
    EXPECT_EQ(same.bytes(), before) << "the source was changed";
}

TEST(Restore, TargetMayBeTheSource) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture picture = scenePicture(kColours, kernel.get());
    HostPicture expected = restored(picture, {kernel.get()});
    EXPECT_EQ(restore(picture.view(), picture.view(), {kernel.get()}, defaultSettings()),
              VELORN_STATUS_OK);
    EXPECT_EQ(picture.pixels(), expected.pixels());
}

TEST(Restore, TargetMayOverlapTheSource) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 3.0f);
    Layout layout = kColours;
    layout.offset = 7 * kColours.width * 3;
    HostPicture picture = scenePicture(layout, kernel.get());
    HostPicture expected = restored(picture, {kernel.get()});
    VelornPicture shifted = picture.view();
    shifted.data = picture.row(0) - 7 * picture.stride();
    EXPECT_EQ(restore(picture.view(), shifted, {kernel.get()}, defaultSettings()),
              VELORN_STATUS_OK);
    const auto* const first = static_cast<const std::uint8_t*>(shifted.data);
    const std::vector<std::uint8_t> result(first, first + picture.rowBytes() * kColours.height);
    EXPECT_EQ(result, expected.pixels());
}

TEST(Restore, GreyPicturesAreOnePlane) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture grey = scenePicture({.width = 140, .height = 100, .channels = 1}, kernel.get());
    HostPicture target = restored(grey, {kernel.get()});
    EXPECT_LT(distanceFromScene(target), 0.7 * distanceFromScene(grey));
}

TEST(Restore, ChannelsOfTwoAndFourAreRestoredOneByOne) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_GAUSSIAN, 1.5f);
    VelornRestoreSettings settings = defaultSettings();
    settings.strength = 3000.0f;
    settings.noise = 1.0f;
    settings.alpha = 0.8f;
    settings.limit = 0.5f;
    settings.light = VELORN_LIGHT_DISPLAY;
    settings.quality = VELORN_QUALITY_FAST;
    for (const int channels : {2, 4}) {
        HostPicture all =
            scenePicture({.width = 120, .height = 90, .channels = channels}, kernel.get());
        HostPicture target = restored(all, {kernel.get()}, settings);
        for (int c = 0; c < channels; ++c) {
            HostPicture one({.width = 120, .height = 90, .channels = 1});
            for (int y = 0; y < 90; ++y) {
                for (int x = 0; x < 120; ++x) {
                    one.set(x, y, 0, all.get(x, y, c));
                }
            }
            HostPicture oneRestored = restored(one, {kernel.get()}, settings);
            int differing = 0;
            for (int y = 0; y < 90; ++y) {
                for (int x = 0; x < 120; ++x) {
                    differing += oneRestored.get(x, y, 0) != target.get(x, y, c);
                }
            }
            EXPECT_EQ(differing, 0) << "channel " << c << " of " << channels;
        }
    }
}

TEST(Restore, KernelsOfChannelsAreThoseOfTheirChannels) {
    // Red is sharp, green and blue are blurred.
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 3.0f);
    const HostKernel point = madeKernel(VELORN_BLUR_GAUSSIAN, 0.1f);
    HostPicture source = scenePicture(kColours, disc.get(), 0.5);
    HostPicture sharp = scenePicture(kColours, nullptr, 0.5);
    for (int y = 0; y < kColours.height; ++y) {
        for (int x = 0; x < kColours.width; ++x) {
            source.set(x, y, 0, sharp.get(x, y, 0));
        }
    }
    HostPicture matching = restored(source, {point.get(), disc.get(), disc.get()});
    HostPicture uniform = restored(source, {disc.get()});
    EXPECT_LT(distanceFromScene(matching), 0.8 * distanceFromScene(source));
    EXPECT_LT(distanceFromScene(matching), 0.8 * distanceFromScene(uniform));
}

TEST(Restore, TinyPicturesAreRestored) {
    const HostKernel point = madeKernel(VELORN_BLUR_GAUSSIAN, 0.1f);
    for (const int channels : {1, 3}) {
        for (const auto& [width, height] : {std::pair{1, 1}, {1, 40}, {40, 1}, {2, 3}}) {
            HostPicture source =
                scenePicture({.width = width, .height = height, .channels = channels}, nullptr);
            restored(source, {point.get()});
            restored(source, {});
        }
    }
}

TEST(Restore, ValuesThatAreNotFiniteDoNoHarm) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 3.0f);
    Layout layout = kColours;
    layout.samples = VELORN_SAMPLES_F32;
    HostPicture source = scenePicture(layout, kernel.get());
    source.set(50, 50, 0, std::numeric_limits<double>::quiet_NaN());
    source.set(80, 20, 1, std::numeric_limits<double>::infinity());
    source.set(120, 120, 2, -std::numeric_limits<double>::infinity());
    source.set(150, 30, 2, 1e30);
    HostPicture target = restored(source, {kernel.get()});
    for (int y = 0; y < layout.height; ++y) {
        for (int x = 0; x < layout.width; ++x) {
            for (int c = 0; c < 3; ++c) {
                ASSERT_TRUE(std::isfinite(target.get(x, y, c))) << x << " " << y << " " << c;
            }
        }
    }
}

TEST(Restore, EveryStageChangesThePicture) {
    HostPicture source = scenePicture(kColours, nullptr);
    VelornRestoreSettings sharpening = defaultSettings();
    sharpening.edgeGain = 2.0f;
    EXPECT_TRUE(restored(source, {}, sharpening).pixels() != source.pixels());
    VelornRestoreSettings slope = defaultSettings();
    slope.edgeSlope = 3.0f;
    EXPECT_TRUE(restored(source, {}, slope).pixels() != source.pixels());
    VelornRestoreSettings detail = defaultSettings();
    detail.detailGain = 1.0f;
    EXPECT_TRUE(restored(source, {}, detail).pixels() != source.pixels());
    VelornRestoreSettings gamma = defaultSettings();
    gamma.detailGamma = 1.0f;
    EXPECT_TRUE(restored(source, {}, gamma).pixels() != source.pixels());
}

TEST(Restore, ResultDoesNotDependOnTheNumberOfThreads) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 4.0f);
    HostPicture source = scenePicture({.width = 700, .height = 600}, kernel.get());
    VelornRestoreSettings settings = defaultSettings();
    settings.threads = 1;
    HostPicture expected = restored(source, {kernel.get()}, settings);
    for (const int threads : {2, 5, 0}) {
        settings.threads = threads;
        EXPECT_EQ(restored(source, {kernel.get()}, settings).pixels(), expected.pixels());
    }
}

TEST(Restore, SeveralThreadsRestoreAtOnce) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 3.0f);
    const HostKernel motion = madeKernel(VELORN_BLUR_MOTION, 9.0f, 60.0f);
    HostPicture source = scenePicture(kColours, disc.get());
    const Kernels kernels[] = {{disc.get()}, {motion.get()}, {}};
    std::vector<std::vector<std::uint8_t>> expected;
    for (const Kernels& some : kernels) {
        expected.push_back(restored(source, some).pixels());
    }
    std::vector<std::vector<std::uint8_t>> results(6);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < results.size(); ++i) {
        threads.emplace_back([&, i] {
            for (int repetition = 0; repetition < 3; ++repetition) {
                results[i] = restored(source, kernels[i % 3]).pixels();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_EQ(results[i], expected[i % 3]) << i;
    }
}

std::ptrdiff_t threadsOfTheProcess() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

TEST(Restore, LeavesNoThreadsBehind) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture source = scenePicture(kColours, kernel.get());
    VelornRestoreSettings settings = defaultSettings();
    settings.threads = 4;
    settings.edgeGain = 2.0f;
    settings.detailGain = 1.0f;
    settings.quality = VELORN_QUALITY_BEST;
    const std::ptrdiff_t before = threadsOfTheProcess();
    restored(source, {kernel.get()}, settings);
    // The system lists a thread a little longer than it runs.
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (threadsOfTheProcess() > before && std::chrono::steady_clock::now() < limit) {
        std::this_thread::yield();
    }
    EXPECT_EQ(threadsOfTheProcess(), before);
}

#ifdef __SSE__
TEST(Restore, ControlWordOfTheHostStays) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture source = scenePicture(kColours, kernel.get());
    HostPicture expected = restored(source, {kernel.get()});
    const unsigned before = _mm_getcsr();
    constexpr unsigned kFlags = 0x3F;
    constexpr unsigned kDenormals = 0x8040;
    EXPECT_EQ(before & kDenormals, 0u) << "set when the library was loaded";
    _mm_setcsr(before ^ kDenormals);
    EXPECT_EQ(restored(source, {kernel.get()}).pixels(), expected.pixels());
    EXPECT_EQ(_mm_getcsr() & ~kFlags, (before ^ kDenormals) & ~kFlags);
    _mm_setcsr(before);
}
#endif

} // namespace
} // namespace velorntest
