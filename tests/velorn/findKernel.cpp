#include "tests/velorn/failure.h"
#include "tests/velorn/Scene.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <random>
#include <thread>

namespace velorntest {
namespace {

constexpr Layout kSmall{.width = 220, .height = 180};

VelornFindSettings defaultSettings() {
    VelornFindSettings settings{};
    settings.size = sizeof settings;
    EXPECT_EQ(velornFindDefaults(&settings), VELORN_STATUS_OK);
    return settings;
}

HostKernel found(HostPicture& picture, const VelornFindSettings& settings,
                 VelornFindReport* report = nullptr) {
    const VelornPicture view = picture.view();
    VelornKernel* kernel = nullptr;
    EXPECT_EQ(velornFindKernel(&view, &settings, &kernel, report), VELORN_STATUS_OK)
        << velornLastMessage();
    return HostKernel(kernel);
}

/// Root mean square distance of the weight of two kernels from the centre, along both axes.
double spread(const VelornKernel* kernel) {
    const int width = velornKernelWidth(kernel);
    const int height = velornKernelHeight(kernel);
    const std::vector<float> values = valuesOf(kernel);
    double sum = 0.0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            sum += double{values[static_cast<std::size_t>(y * width + x)]} *
                   ((x - width / 2) * (x - width / 2) + (y - height / 2) * (y - height / 2));
        }
    }
    return std::sqrt(sum);
}

TEST(FindKernel, FindsADisc) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture picture = scenePicture(kSmall, disc.get(), 0.5);
    VelornFindReport report{};
    report.size = sizeof report;
    const HostKernel kernel = found(picture, defaultSettings(), &report);
    EXPECT_EQ(velornKernelWidth(kernel.get()) % 2, 1);
    EXPECT_EQ(velornKernelHeight(kernel.get()) % 2, 1);
    EXPECT_NEAR(spread(kernel.get()), spread(disc.get()), 0.35 * spread(disc.get()));
    EXPECT_EQ(report.size, sizeof report);
    EXPECT_GE(report.confidence, 0.0f);
    EXPECT_LE(report.confidence, 1.0f);
    EXPECT_GT(report.agreement, 0.0f);
    EXPECT_GT(report.misfit, 0.0f);
    EXPECT_EQ(report.kind, VELORN_KIND_DISC);
    EXPECT_NEAR(report.extent, 3.0f, 1.0f);
    EXPECT_EQ(report.parts, 1);
    EXPECT_EQ(report.partAgreement, 1.0f);
    EXPECT_GE(report.candidates, 3);
}

TEST(FindKernel, SharpPicturesHaveNoKind) {
    HostPicture picture = scenePicture(kSmall, nullptr, 0.5);
    VelornFindReport report{};
    report.size = sizeof report;
    const HostKernel kernel = found(picture, defaultSettings(), &report);
    EXPECT_EQ(velornKernelWidth(kernel.get()), 1);
    EXPECT_EQ(report.kind, VELORN_KIND_NONE);
    EXPECT_EQ(report.extent, 0.0f);
    EXPECT_LT(report.confidence, 0.5f);
}

TEST(FindKernel, RecordsOfTheFirstVersionAreServed) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 2.0f);
    HostPicture picture = scenePicture({.width = 140, .height = 120, .channels = 1}, disc.get());
    VelornFindSettings settings;
    VelornFindReport report;
    std::memset(&settings, 0x5A, sizeof settings);
    std::memset(&report, 0x5A, sizeof report);
    settings.size = offsetof(VelornFindSettings, region);
    report.size = offsetof(VelornFindReport, kind);
    ASSERT_EQ(velornFindDefaults(&settings), VELORN_STATUS_OK);
    const HostKernel kernel = found(picture, settings, &report);
    EXPECT_EQ(valuesOf(kernel.get()), valuesOf(found(picture, defaultSettings()).get()));
    EXPECT_GE(report.confidence, 0.0f);
    EXPECT_LE(report.confidence, 1.0f);
    EXPECT_EQ(report.kind, 0x5A5A5A5A);
}

TEST(FindKernel, LooksAtTheRegionOnly) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture picture = scenePicture(kSmall, disc.get(), 0.5);
    HostPicture part = scenePicture({.width = 160, .height = 130}, disc.get(), 0.5);
    // The region holds `part`, everything else is noise.
    std::mt19937 random(3);
    for (int y = 0; y < kSmall.height; ++y) {
        for (int x = 0; x < kSmall.width; ++x) {
            const bool isInside = x >= 50 && x < 210 && y >= 30 && y < 160;
            for (int c = 0; c < 3; ++c) {
                picture.set(x, y, c,
                            isInside ? part.get(x - 50, y - 30, c)
                                     : static_cast<double>(random() % 256) / 255.0);
            }
        }
    }
    VelornFindSettings settings = defaultSettings();
    settings.region = {50, 30, 160, 130};
    EXPECT_EQ(valuesOf(found(picture, settings).get()),
              valuesOf(found(part, defaultSettings()).get()));
}

/// The correlation of two kernels with one centre.
double likeness(const VelornKernel* first, const VelornKernel* second) {
    double product = 0.0;
    double squares[2] = {0.0, 0.0};
    for (int y = -40; y <= 40; ++y) {
        for (int x = -40; x <= 40; ++x) {
            const auto at = [&](const VelornKernel* kernel) {
                const int column = x + velornKernelWidth(kernel) / 2;
                const int row = y + velornKernelHeight(kernel) / 2;
                const bool isInside = column >= 0 && column < velornKernelWidth(kernel) &&
                                      row >= 0 && row < velornKernelHeight(kernel);
                return isInside ? double{velornKernelValues(
                                      kernel)[row * velornKernelWidth(kernel) + column]}
                                : 0.0;
            };
            product += at(first) * at(second);
            squares[0] += at(first) * at(first);
            squares[1] += at(second) * at(second);
        }
    }
    return product / std::sqrt(squares[0] * squares[1]);
}

TEST(FindKernel, RefinesAKernel) {
    const HostKernel line = madeKernel(VELORN_BLUR_MOTION, 11.0f, 20.0f);
    const HostKernel guess = madeKernel(VELORN_BLUR_MOTION, 7.0f, 35.0f);
    HostPicture picture = scenePicture(kSmall, line.get(), 0.5);
    VelornFindSettings settings = defaultSettings();
    settings.start = guess.get();
    VelornFindReport report{};
    report.size = sizeof report;
    const HostKernel refined = found(picture, settings, &report);
    EXPECT_GT(likeness(refined.get(), line.get()), 0.9);
    EXPECT_LT(likeness(guess.get(), line.get()), 0.8);
    EXPECT_GE(report.candidates, 2);
}

TEST(FindKernel, KeepsAStartThatCannotBeImproved) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture picture = scenePicture(kSmall, disc.get(), 0.5);
    VelornFindSettings settings = defaultSettings();
    settings.start = disc.get();
    EXPECT_GT(likeness(found(picture, settings).get(), disc.get()), 0.97);
}

TEST(FindKernel, SidesAreBounded) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture picture = scenePicture(kSmall, disc.get(), 0.5);
    VelornFindSettings settings = defaultSettings();
    settings.maxWidth = 9;
    settings.maxHeight = 5;
    settings.partSide = 128;
    const HostKernel kernel = found(picture, settings);
    EXPECT_LE(velornKernelWidth(kernel.get()), 9);
    EXPECT_LE(velornKernelHeight(kernel.get()), 5);
}

TEST(FindKernel, SmoothingOfTheEdgesNarrowsTheKernel) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture picture = scenePicture(kSmall, disc.get(), 0.5);
    VelornFindSettings settings = defaultSettings();
    const double plain = spread(found(picture, settings).get());
    settings.smoothing = 2.0f;
    EXPECT_LT(spread(found(picture, settings).get()), 0.9 * plain);
}

TEST(FindKernel, NullSettingsAreTheDefaults) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 2.0f);
    HostPicture picture = scenePicture({.width = 140, .height = 120, .channels = 1}, disc.get());
    const HostKernel expected = found(picture, defaultSettings());
    const VelornPicture view = picture.view();
    VelornKernel* kernel = nullptr;
    ASSERT_EQ(velornFindKernel(&view, nullptr, &kernel, nullptr), VELORN_STATUS_OK);
    EXPECT_EQ(valuesOf(HostKernel(kernel).get()), valuesOf(expected.get()));
}

TEST(FindKernel, ResultDependsOnNeitherThreadsNorLayoutNorOtherCalls) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 2.0f);
    const Layout layout{.width = 140, .height = 120};
    Layout odd = layout;
    odd.padding = 3;
    odd.isUpsideDown = true;
    HostPicture picture = scenePicture(layout, disc.get());
    HostPicture same = scenePicture(odd, disc.get());
    VelornFindSettings settings = defaultSettings();
    settings.threads = 1;
    const std::vector<float> expected = valuesOf(found(picture, settings).get());
    settings.threads = 3;
    std::vector<std::vector<float>> results(3);
    std::vector<std::thread> threads;
    for (std::vector<float>& result : results) {
        threads.emplace_back([&] { result = valuesOf(found(same, settings).get()); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::vector<float>& result : results) {
        EXPECT_EQ(result, expected);
    }
}

/// A pointer that is not null, to see it become null.
VelornKernel* somePointer() {
    static int target;
    return reinterpret_cast<VelornKernel*>(&target);
}

void expectNoKernel(const VelornPicture* picture, const VelornFindSettings* settings,
                    VelornFindReport* report, VelornStatus status, const char* message) {
    VelornKernel* kernel = somePointer();
    EXPECT_VELORN_FAILURE(velornFindKernel(picture, settings, &kernel, report), status, message);
    EXPECT_EQ(kernel, nullptr);
}

TEST(FindKernelFailures, WrongArguments) {
    HostPicture picture(kSmall);
    const VelornPicture view = picture.view();
    const auto invalid = VELORN_STATUS_INVALID_ARGUMENT;
    expectNoKernel(nullptr, nullptr, nullptr, invalid, "picture is null");
    VelornPicture wrong = view;
    wrong.samples = 5;
    expectNoKernel(&wrong, nullptr, nullptr, invalid, "picture->samples is 5, but must be 1..3");
    VelornFindSettings settings = defaultSettings();
    settings.maxWidth = 1;
    expectNoKernel(&view, &settings, nullptr, invalid,
                   "settings->maxWidth is 1, but must be 3..511");
    settings = defaultSettings();
    settings.partSide = 63;
    expectNoKernel(&view, &settings, nullptr, invalid,
                   "settings->partSide is 63, but must be at least 64");
    settings = defaultSettings();
    settings.smoothing = 2.5f;
    expectNoKernel(&view, &settings, nullptr, invalid,
                   "settings->smoothing is 2.5, but must be 0..2");
    settings = defaultSettings();
    settings.region = {0, 100, 40, 81};
    expectNoKernel(&view, &settings, nullptr, invalid,
                   "settings->region.height is 81, but must be 1..80");
    settings = defaultSettings();
    settings.size = 7;
    expectNoKernel(&view, &settings, nullptr, invalid,
                   "settings->size is 7, but must be 64, the size of the record");
    VelornFindReport report{};
    expectNoKernel(&view, nullptr, &report, invalid,
                   "report->size is 0, but must be 44, the size of the record");
    EXPECT_VELORN_INVALID(velornFindKernel(&view, nullptr, nullptr, nullptr), "kernel is null");
}

TEST(FindKernelFailures, PicturesWithoutEdges) {
    HostPicture constant(kSmall);
    const VelornPicture view = constant.view();
    VelornFindReport report{};
    report.size = sizeof report;
    report.confidence = -5.0f;
    expectNoKernel(&view, nullptr, &report, VELORN_STATUS_NO_KERNEL,
                   "the picture has too few edges to find a kernel");
    EXPECT_EQ(report.confidence, -5.0f);
}

TEST(FindKernelFailures, StartsThatAreTooLarge) {
    HostPicture picture(kSmall);
    const VelornPicture view = picture.view();
    const HostKernel large = madeKernel(VELORN_BLUR_DISC, 31.0f);
    VelornFindSettings settings = defaultSettings();
    settings.start = large.get();
    expectNoKernel(&view, &settings, nullptr, VELORN_STATUS_KERNEL_TOO_LARGE,
                   "the kernel to refine is 63 by 63, but may only be 61 by 61");
}

TEST(FindKernelFailures, TinyRegions) {
    HostPicture picture(kSmall);
    const VelornPicture view = picture.view();
    VelornFindSettings settings = defaultSettings();
    settings.region = {10, 10, 100, 31};
    expectNoKernel(&view, &settings, nullptr, VELORN_STATUS_NO_KERNEL,
                   "the picture is too small to find a kernel");
}

TEST(FindKernelFailures, TinyPictures) {
    HostPicture tiny({.width = 31, .height = 300});
    const VelornPicture view = tiny.view();
    expectNoKernel(&view, nullptr, nullptr, VELORN_STATUS_NO_KERNEL,
                   "the picture is too small to find a kernel");
}

TEST(FindKernelCancellation, GivesNoKernel) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 2.0f);
    HostPicture picture = scenePicture(kSmall, disc.get());
    const VelornPicture view = picture.view();
    for (const double until : {0.0, 0.3, 1.0}) {
        VelornFindSettings settings = defaultSettings();
        double limit = until;
        settings.userData = &limit;
        settings.progress = [](double done, void* userData) -> std::int32_t {
            return done < *static_cast<double*>(userData);
        };
        expectNoKernel(&view, &settings, nullptr, VELORN_STATUS_CANCELLED, "cancelled");
    }
}

TEST(FindKernelProgress, RisesToOne) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 2.0f);
    HostPicture picture = scenePicture({.width = 140, .height = 120, .channels = 1}, disc.get());
    std::vector<double> reports;
    VelornFindSettings settings = defaultSettings();
    settings.userData = &reports;
    settings.progress = [](double done, void* userData) -> std::int32_t {
        static_cast<std::vector<double>*>(userData)->push_back(done);
        return 1;
    };
    found(picture, settings);
    ASSERT_GE(reports.size(), 2u);
    EXPECT_TRUE(std::ranges::is_sorted(reports));
    EXPECT_EQ(reports.back(), 1.0);
}

} // namespace
} // namespace velorntest
