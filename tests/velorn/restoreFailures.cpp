#include "tests/velorn/failure.h"
#include "tests/velorn/Restoration.h"
#include "tests/velorn/Scene.h"

#include <array>
#include <functional>
#include <string>
#include <utility>

namespace velorntest {
namespace {

/// The arguments of a call of velornRestore that would succeed.
struct Call {
    HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 2.0f);
    HostPicture sourcePicture{{.width = 40, .height = 30}};
    HostPicture targetPicture{{.width = 40, .height = 30}};
    VelornPicture source = sourcePicture.view();
    VelornPicture target = targetPicture.view();
    Kernels kernels{kernel.get()};
    VelornRestoreSettings settings = defaultSettings();
    VelornRestoreReport report{};

    Call() {
        report.size = sizeof report;
        report.strength = -77.0f;
    }
    VelornStatus run() {
        return velornRestore(&source, &target, kernels.data(),
                             static_cast<std::int32_t>(kernels.size()), &settings, &report);
    }
    bool isUntouched() const {
        const auto isGuard = [](std::uint8_t byte) { return byte == HostPicture::kGuard; };
        return std::ranges::all_of(targetPicture.bytes(), isGuard) && report.strength == -77.0f;
    }
};

void expectFailure(const std::function<void(Call&)>& change, VelornStatus status,
                   const char* message) {
    Call call;
    change(call);
    EXPECT_VELORN_FAILURE(call.run(), status, message);
    EXPECT_TRUE(call.isUntouched()) << message;
}

void expectInvalid(const std::function<void(Call&)>& change, const char* message) {
    expectFailure(change, VELORN_STATUS_INVALID_ARGUMENT, message);
}

TEST(RestoreFailures, UnchangedCallSucceeds) {
    Call call;
    EXPECT_EQ(call.run(), VELORN_STATUS_OK) << velornLastMessage();
    EXPECT_FALSE(call.isUntouched());
}

TEST(RestoreFailures, NullPictures) {
    Call call;
    EXPECT_VELORN_INVALID(velornRestore(nullptr, &call.target, nullptr, 0, nullptr, nullptr),
                          "source is null");
    EXPECT_VELORN_INVALID(velornRestore(&call.source, nullptr, nullptr, 0, nullptr, nullptr),
                          "target is null");
    EXPECT_TRUE(call.isUntouched());
}

TEST(RestoreFailures, Sources) {
    expectInvalid([](Call& c) { c.source.data = nullptr; }, "source->data is null");
    expectInvalid([](Call& c) { c.source.width = 0; },
                  "source->width is 0, but must be 1..1073741824");
    expectInvalid([](Call& c) { c.source.height = -1; },
                  "source->height is -1, but must be 1..1073741824");
    expectInvalid([](Call& c) { c.source.channels = 5; },
                  "source->channels is 5, but must be 1..4");
    expectInvalid([](Call& c) { c.source.samples = 9; }, "source->samples is 9, but must be 1..3");
    expectInvalid([](Call& c) { c.source.rowStride = 119; },
                  "source->rowStride is 119, but a row has 120 bytes");
}

TEST(RestoreFailures, Targets) {
    expectInvalid([](Call& c) { c.target.data = nullptr; }, "target->data is null");
    expectInvalid([](Call& c) { c.target.width = 39; },
                  "target->width is 39, but the region has 40");
    expectInvalid([](Call& c) { c.target.height = 29; },
                  "target->height is 29, but the region has 30");
    expectInvalid([](Call& c) { c.target.channels = 2; },
                  "target->channels is 2, but the source has 3");
    expectInvalid([](Call& c) { c.target.hasAlpha = 1; },
                  "target->hasAlpha is 1, but the source has 0");
    expectInvalid([](Call& c) { c.target.samples = 0; }, "target->samples is 0, but must be 1..3");
    expectInvalid([](Call& c) { c.target.rowStride = -100; },
                  "target->rowStride is -100, but a row has 120 bytes");
    expectInvalid(
        [](Call& c) {
            c.settings.region = {0, 0, 10, 30};
        },
        "target->width is 40, but the region has 10");
}

TEST(RestoreFailures, Kernels) {
    expectInvalid([](Call& c) { c.kernels.assign(2, c.kernel.get()); },
                  "kernelCount is 2, but must be 0, 1 or 3, the number of colour channels");
    expectInvalid([](Call& c) { c.kernels.assign(4, c.kernel.get()); },
                  "kernelCount is 4, but must be 0, 1 or 3, the number of colour channels");
    expectInvalid(
        [](Call& c) {
            c.kernels = {c.kernel.get(), nullptr, c.kernel.get()};
        },
        "kernels[1] is null");
    Call call;
    EXPECT_VELORN_INVALID(velornRestore(&call.source, &call.target, nullptr, 1, nullptr, nullptr),
                          "kernels is null");
    EXPECT_VELORN_INVALID(
        velornRestore(&call.source, &call.target, call.kernels.data(), -1, nullptr, nullptr),
        "kernelCount is -1, but must be 0, 1 or 3, the number of colour channels");
    EXPECT_TRUE(call.isUntouched());
}

TEST(RestoreFailures, KernelsLargerThanTheSource) {
    expectFailure(
        [](Call& c) {
            c.kernel = madeKernel(VELORN_BLUR_DISC, 15.0f);
            c.kernels = {c.kernel.get()};
        },
        VELORN_STATUS_KERNEL_TOO_LARGE, "the kernel is 31 by 31, but the source is only 40 by 30");
}

TEST(RestoreFailures, Settings) {
    expectInvalid([](Call& c) { c.settings.size -= 8; },
                  "settings->size is 112, but must be 120, the size of the record");
    expectInvalid([](Call& c) { c.settings.strength = 0.0f; },
                  "settings->strength is 0, but must be above 0, or VELORN_AUTOMATIC");
    expectInvalid([](Call& c) { c.settings.edgeRadius = NAN; },
                  "settings->edgeRadius is nan, but must be 0.1..10");
    expectInvalid([](Call& c) { c.settings.quality = 7; },
                  "settings->quality is 7, but must be 0..2");
    expectInvalid([](Call& c) { c.settings.threads = -2; },
                  "settings->threads is -2, but must be at least 0");
    expectInvalid(
        [](Call& c) {
            c.settings.region = {39, 0, 2, 1};
        },
        "settings->region.width is 2, but must be 1..1");
    expectInvalid(
        [](Call& c) {
            c.settings.region = {0, -1, 1, 1};
        },
        "settings->region.y is -1, but must be 0..29");
    expectInvalid([](Call& c) { c.settings.light = 3; }, "settings->light is 3, but must be 0..2");
    expectInvalid([](Call& c) { c.settings.profileSize = 1; },
                  "settings->profile and settings->profileSize contradict each other");
}

TEST(RestoreFailures, ProfilesWithoutCurvesFailInLinearLightOnly) {
    const std::array<char, 200> noProfile{};
    Call call;
    call.settings.profile = noProfile.data();
    call.settings.profileSize = noProfile.size();
    call.settings.light = VELORN_LIGHT_LINEAR;
    EXPECT_EQ(call.run(), VELORN_STATUS_INVALID_ARGUMENT);
    EXPECT_NE(std::string(velornLastMessage()).find("profile"), std::string::npos)
        << velornLastMessage();
    EXPECT_TRUE(call.isUntouched());
    for (const VelornLight light : {VELORN_LIGHT_AUTOMATIC, VELORN_LIGHT_DISPLAY}) {
        call.settings.light = light;
        EXPECT_EQ(call.run(), VELORN_STATUS_OK) << velornLastMessage();
        EXPECT_EQ(call.report.light, VELORN_LIGHT_DISPLAY);
    }
}

TEST(RestoreFailures, Reports) {
    expectInvalid([](Call& c) { c.report.size = 0; },
                  "report->size is 0, but must be 64, the size of the record");
}

/// A progress function that cancels the call as soon as it has come to `limit`.
struct Canceller {
    double limit = 0.0;
    int callsAfterwards = 0;
    bool hasCancelled = false;

    static std::int32_t report(double done, void* userData) {
        auto& canceller = *static_cast<Canceller*>(userData);
        canceller.callsAfterwards += canceller.hasCancelled;
        canceller.hasCancelled = canceller.hasCancelled || done >= canceller.limit;
        return !canceller.hasCancelled;
    }
};

TEST(RestoreCancellation, LeavesTheTargetAndTheReportUnchanged) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture scene = scenePicture({.width = 300, .height = 200}, kernel.get());
    for (const auto& [limit, quality] : {std::pair{0.0, VELORN_QUALITY_NORMAL},
                                         {0.05, VELORN_QUALITY_NORMAL},
                                         {0.3, VELORN_QUALITY_FAST},
                                         {0.8, VELORN_QUALITY_BEST},
                                         {1.0, VELORN_QUALITY_NORMAL}}) {
        Call call;
        call.source = scene.view();
        call.settings.quality = quality;
        call.settings.region = {100, 50, 40, 30};
        Canceller canceller{.limit = limit};
        call.settings.progress = &Canceller::report;
        call.settings.userData = &canceller;
        EXPECT_EQ(call.run(), VELORN_STATUS_CANCELLED);
        EXPECT_STREQ(velornLastMessage(), "cancelled");
        EXPECT_EQ(canceller.callsAfterwards, 0);
        EXPECT_TRUE(call.isUntouched());
    }
}

TEST(RestoreCancellation, NextCallSucceeds) {
    Call call;
    call.settings.progress = [](double, void*) -> std::int32_t { return 0; };
    EXPECT_EQ(call.run(), VELORN_STATUS_CANCELLED);
    call.settings.progress = nullptr;
    EXPECT_EQ(call.run(), VELORN_STATUS_OK);
    EXPECT_STREQ(velornLastMessage(), "");
}

TEST(RestoreProgress, RisesToOneOnTheCallingThread) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture source = scenePicture({.width = 600, .height = 400}, kernel.get());
    struct Record {
        std::vector<double> reports;
        std::vector<std::thread::id> threads;
    } record;
    VelornRestoreSettings settings = defaultSettings();
    settings.userData = &record;
    settings.progress = [](double done, void* userData) -> std::int32_t {
        static_cast<Record*>(userData)->reports.push_back(done);
        static_cast<Record*>(userData)->threads.push_back(std::this_thread::get_id());
        return -1; // any value but 0 continues
    };
    restored(source, {kernel.get()}, settings);
    ASSERT_GE(record.reports.size(), 2u);
    EXPECT_TRUE(std::ranges::is_sorted(record.reports));
    EXPECT_GE(record.reports.front(), 0.0);
    EXPECT_EQ(record.reports.back(), 1.0);
    EXPECT_EQ(std::ranges::count(record.threads, std::this_thread::get_id()),
              static_cast<std::ptrdiff_t>(record.threads.size()));
}

TEST(RestoreProgress, CallbackMayCallTheLibrary) {
    Call call;
    call.settings.progress = [](double, void*) -> std::int32_t {
        EXPECT_EQ(velornMakeKernel(0, -1.0f, 0.0f, nullptr), VELORN_STATUS_INVALID_ARGUMENT);
        Call inner;
        EXPECT_EQ(inner.run(), VELORN_STATUS_OK);
        EXPECT_EQ(velornMakeKernel(0, -1.0f, 0.0f, nullptr), VELORN_STATUS_INVALID_ARGUMENT);
        return 1;
    };
    EXPECT_EQ(call.run(), VELORN_STATUS_OK);
    EXPECT_STREQ(velornLastMessage(), "");
}

} // namespace
} // namespace velorntest
