// Calls that run out of memory. Each check runs in a process of its own, where the heap has no free
// blocks of earlier tests: it takes every large block from the system, and a limit of the address
// space makes that fail.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)

#include "tests/support/AddressSpaceLimit.h"
#include "tests/velorn/Restoration.h"
#include "tests/velorn/Scene.h"

#include <cstdlib>
#include <cstring>
#include <optional>

namespace velorntest {
namespace {

using vel::test::AddressSpaceLimit;

template <class Check>
void inAFreshProcess(const Check& check) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            check();
            std::exit(testing::Test::HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

/// Less than a plane of a tile, more than all small blocks.
constexpr std::size_t kRoom = std::size_t{96} << 10;

/// A progress function that leaves hardly any memory as soon as the call has come to `done`.
struct Exhaustion {
    double done = 0.0;
    std::optional<AddressSpaceLimit> limit;

    static std::int32_t report(double done, void* userData) {
        auto& self = *static_cast<Exhaustion*>(userData);
        if (done >= self.done && !self.limit) {
            self.limit.emplace(kRoom);
        }
        return 1;
    }
};

TEST(ExhaustedMemoryDeathTest, RestorationLeavesTheTargetUnchanged) {
    inAFreshProcess([] {
        const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 3.0f);
        HostPicture source = scenePicture({.width = 400, .height = 400}, kernel.get());
        HostPicture target(source.layout());
        const std::vector<std::uint8_t> before = target.bytes();
        {
            const AddressSpaceLimit limit(kRoom);
            EXPECT_EQ(restore(source.view(), target.view(), {kernel.get()}, defaultSettings()),
                      VELORN_STATUS_OUT_OF_MEMORY);
            EXPECT_STREQ(velornLastMessage(), "out of memory");
        }
        EXPECT_EQ(target.bytes(), before);
        EXPECT_EQ(restore(source.view(), target.view(), {kernel.get()}, defaultSettings()),
                  VELORN_STATUS_OK);
    });
}

TEST(ExhaustedMemoryDeathTest, RestorationEndsInTheMiddle) {
    inAFreshProcess([] {
        const HostKernel kernel = madeKernel(VELORN_BLUR_DISC, 3.0f);
        HostPicture source = scenePicture({.width = 400, .height = 400}, kernel.get());
        HostPicture target(source.layout());
        const std::vector<std::uint8_t> before = target.bytes();
        Exhaustion exhaustion;
        VelornRestoreSettings settings = defaultSettings();
        settings.progress = &Exhaustion::report;
        settings.userData = &exhaustion;
        EXPECT_EQ(restore(source.view(), target.view(), {kernel.get()}, settings),
                  VELORN_STATUS_OUT_OF_MEMORY);
        EXPECT_TRUE(exhaustion.limit.has_value());
        EXPECT_EQ(target.bytes(), before);
    });
}

TEST(ExhaustedMemoryDeathTest, SearchGivesNoKernel) {
    inAFreshProcess([] {
        HostPicture picture = scenePicture({.width = 300, .height = 300}, nullptr);
        const VelornPicture view = picture.view();
        VelornKernel* kernel = nullptr;
        {
            const AddressSpaceLimit limit(kRoom);
            EXPECT_EQ(velornFindKernel(&view, nullptr, &kernel, nullptr),
                      VELORN_STATUS_OUT_OF_MEMORY);
        }
        EXPECT_EQ(kernel, nullptr);
    });
}

TEST(ExhaustedMemoryDeathTest, SearchGivesNoCandidates) {
    inAFreshProcess([] {
        HostPicture picture = scenePicture({.width = 300, .height = 300}, nullptr);
        const VelornPicture view = picture.view();
        VelornKernel* kernels[3] = {};
        std::int32_t count = 3;
        {
            const AddressSpaceLimit limit(kRoom);
            EXPECT_EQ(velornFindCandidates(&view, nullptr, kernels, nullptr, 3, &count),
                      VELORN_STATUS_OUT_OF_MEMORY);
        }
        EXPECT_EQ(kernels[0], nullptr);
        EXPECT_EQ(count, 0);
    });
}

TEST(ExhaustedMemoryDeathTest, LargeKernelsAreNotMade) {
    inAFreshProcess([] {
        const std::vector<float> values(401 * 401, 1.0f);
        VelornKernel* kernel = nullptr;
        {
            const AddressSpaceLimit limit(kRoom);
            for (const int blur : {VELORN_BLUR_GAUSSIAN, VELORN_BLUR_DISC, VELORN_BLUR_MOTION}) {
                EXPECT_EQ(velornMakeKernel(blur, blur == VELORN_BLUR_MOTION ? 500.0f : 80.0f, 45.0f,
                                           &kernel),
                          VELORN_STATUS_OUT_OF_MEMORY);
                EXPECT_STREQ(velornLastMessage(), "out of memory");
            }
            EXPECT_EQ(velornKernelFromValues(values.data(), 401, 401, &kernel),
                      VELORN_STATUS_OUT_OF_MEMORY);
        }
        EXPECT_EQ(kernel, nullptr);
    });
}

TEST(ExhaustedMemoryDeathTest, NoiseOfWidePicturesIsNotMeasured) {
    inAFreshProcess([] {
        std::vector<std::uint8_t> samples(1 << 18, 100);
        VelornPicture picture{};
        picture.data = samples.data();
        picture.rowStride = 1 << 17;
        picture.width = 1 << 17;
        picture.height = 2;
        picture.channels = 1;
        picture.samples = VELORN_SAMPLES_U8;
        VelornNoiseReport report{};
        report.size = sizeof report;
        const AddressSpaceLimit limit(kRoom);
        EXPECT_EQ(velornNoise(&picture, &report), VELORN_STATUS_OUT_OF_MEMORY);
    });
}

} // namespace
} // namespace velorntest

#endif
