#include "tests/velorn/failure.h"
#include "tests/velorn/HostKernel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <thread>

namespace velorntest {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// A pointer that is not null, to see it become null.
VelornKernel* somePointer() {
    static int target;
    return reinterpret_cast<VelornKernel*>(&target);
}

void expectNoKernel(std::int32_t blur, float extent, float angle, VelornStatus status,
                    const char* message) {
    VelornKernel* kernel = somePointer();
    EXPECT_VELORN_FAILURE(velornMakeKernel(blur, extent, angle, &kernel), status, message);
    EXPECT_EQ(kernel, nullptr);
}

TEST(MakeKernel, EachBlurHasItsSides) {
    const HostKernel gaussian = madeKernel(VELORN_BLUR_GAUSSIAN, 1.0f);
    EXPECT_EQ(velornKernelWidth(gaussian.get()), 7);
    EXPECT_EQ(velornKernelHeight(gaussian.get()), 7);
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 4.0f);
    EXPECT_EQ(velornKernelWidth(disc.get()), 9);
    const HostKernel motion = madeKernel(VELORN_BLUR_MOTION, 5.0f, 90.0f);
    EXPECT_EQ(velornKernelWidth(motion.get()), 3);
    EXPECT_EQ(velornKernelHeight(motion.get()), 5);
    EXPECT_STREQ(velornLastMessage(), "");
}

TEST(MakeKernel, ValuesSumToOne) {
    for (const int blur : {VELORN_BLUR_GAUSSIAN, VELORN_BLUR_DISC, VELORN_BLUR_MOTION}) {
        const std::vector<float> values =
            valuesOf(madeKernel(static_cast<VelornBlur>(blur), 6.3f, 20.0f).get());
        EXPECT_NEAR(std::accumulate(values.begin(), values.end(), 0.0), 1.0, 1e-5);
    }
}

TEST(MakeKernel, MotionAtPositiveAnglesRisesToTheRight) {
    const HostKernel kernel = madeKernel(VELORN_BLUR_MOTION, 9.0f, 45.0f);
    const std::vector<float> values = valuesOf(kernel.get());
    const auto width = static_cast<std::size_t>(velornKernelWidth(kernel.get()));
    EXPECT_GT(values[2 * width - 2], 0.01f); // right end of the second row
    EXPECT_LT(values[width + 1], 0.01f);     // its left end
}

TEST(RotateKernel, ReversesTheValues) {
    const HostKernel motion = madeKernel(VELORN_BLUR_MOTION, 6.3f, 20.0f);
    std::vector<float> expected = valuesOf(motion.get());
    std::ranges::reverse(expected);
    VelornKernel* rotated = nullptr;
    ASSERT_EQ(velornRotateKernel(motion.get(), &rotated), VELORN_STATUS_OK);
    EXPECT_EQ(velornKernelWidth(rotated), velornKernelWidth(motion.get()));
    EXPECT_EQ(valuesOf(rotated), expected);
    velornFreeKernel(rotated);
}

TEST(RotateKernel, NullPointersFail) {
    VelornKernel* rotated = somePointer();
    EXPECT_VELORN_FAILURE(velornRotateKernel(nullptr, &rotated), VELORN_STATUS_INVALID_ARGUMENT,
                          "kernel is null");
    EXPECT_EQ(rotated, nullptr);
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 2.0f);
    EXPECT_VELORN_FAILURE(velornRotateKernel(disc.get(), nullptr), VELORN_STATUS_INVALID_ARGUMENT,
                          "rotated is null");
}

TEST(MakeKernel, UnknownBlursFail) {
    expectNoKernel(3, 1.0f, 0.0f, VELORN_STATUS_INVALID_ARGUMENT, "blur is 3, but must be 0..2");
    expectNoKernel(-1, 1.0f, 0.0f, VELORN_STATUS_INVALID_ARGUMENT, "blur is -1, but must be 0..2");
}

TEST(MakeKernel, ExtentsThatAreNotPositiveAndFiniteFail) {
    const auto expect = [](float extent, const char* message) {
        for (const int blur : {0, 1, 2}) {
            expectNoKernel(blur, extent, 0.0f, VELORN_STATUS_INVALID_ARGUMENT, message);
        }
    };
    expect(0.0f, "extent is 0, but must be above 0");
    expect(-1.5f, "extent is -1.5, but must be above 0");
    expect(kNaN, "extent is nan, but must be above 0");
    expect(kInfinity, "extent is inf, but must be above 0");
}

TEST(MakeKernel, AnglesOfMotionAreFinite) {
    expectNoKernel(VELORN_BLUR_MOTION, 5.0f, kNaN, VELORN_STATUS_INVALID_ARGUMENT,
                   "angle is nan, but must be finite");
    expectNoKernel(VELORN_BLUR_MOTION, 5.0f, kInfinity, VELORN_STATUS_INVALID_ARGUMENT,
                   "angle is inf, but must be finite");
    madeKernel(VELORN_BLUR_DISC, 5.0f, kNaN); // other blurs have no angle
}

TEST(MakeKernel, LargeKernelsFail) {
    const char* const message = "a side of the kernel is longer than 511 pixels";
    expectNoKernel(VELORN_BLUR_GAUSSIAN, 86.0f, 0.0f, VELORN_STATUS_KERNEL_TOO_LARGE, message);
    expectNoKernel(VELORN_BLUR_DISC, 256.0f, 0.0f, VELORN_STATUS_KERNEL_TOO_LARGE, message);
    expectNoKernel(VELORN_BLUR_MOTION, 520.0f, 0.0f, VELORN_STATUS_KERNEL_TOO_LARGE, message);
    expectNoKernel(VELORN_BLUR_MOTION, 3e38f, 0.0f, VELORN_STATUS_KERNEL_TOO_LARGE, message);
}

TEST(MakeKernel, NullTargetFails) {
    EXPECT_VELORN_INVALID(velornMakeKernel(VELORN_BLUR_DISC, 4.0f, 0.0f, nullptr),
                          "kernel is null");
}

TEST(KernelFromValues, ValuesAreScaled) {
    const float values[] = {1, 2, 1, 0, 0, 0, 1, 2, 1};
    VelornKernel* made = nullptr;
    ASSERT_EQ(velornKernelFromValues(values, 3, 3, &made), VELORN_STATUS_OK);
    const HostKernel kernel(made);
    EXPECT_EQ(velornKernelWidth(made), 3);
    EXPECT_EQ(velornKernelHeight(made), 3);
    EXPECT_EQ(valuesOf(made),
              (std::vector<float>{.125f, .25f, .125f, 0, 0, 0, .125f, .25f, .125f}));
}

TEST(KernelFromValues, ValuesOfAKernelMakeTheSameKernel) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 7.3f);
    VelornKernel* copy = nullptr;
    ASSERT_EQ(velornKernelFromValues(velornKernelValues(disc.get()), velornKernelWidth(disc.get()),
                                     velornKernelHeight(disc.get()), &copy),
              VELORN_STATUS_OK);
    EXPECT_EQ(valuesOf(HostKernel(copy).get()), valuesOf(disc.get()));
}

TEST(KernelFromValues, WrongArgumentsFail) {
    const std::vector<float> ones(1024, 1.0f);
    const auto expect = [&](const float* values, int width, int height, VelornStatus status,
                            const char* message) {
        VelornKernel* kernel = somePointer();
        EXPECT_VELORN_FAILURE(velornKernelFromValues(values, width, height, &kernel), status,
                              message);
        EXPECT_EQ(kernel, nullptr);
    };
    const auto invalid = VELORN_STATUS_INVALID_ARGUMENT;
    expect(nullptr, 3, 3, invalid, "values is null");
    expect(ones.data(), 4, 3, invalid,
           "the kernel is 4 by 3, but both sides must be odd and at least 1");
    expect(ones.data(), 3, -1, invalid,
           "the kernel is 3 by -1, but both sides must be odd and at least 1");
    expect(ones.data(), 513, 1, VELORN_STATUS_KERNEL_TOO_LARGE,
           "a side of the kernel is longer than 511 pixels");
    const float noNumber[] = {1, kNaN, 1};
    expect(noNumber, 3, 1, invalid, "the kernel has values that are not finite");
    const float negative[] = {1, -2, 1};
    expect(negative, 3, 1, invalid, "the sum of the kernel's values is not positive");
    EXPECT_VELORN_INVALID(velornKernelFromValues(ones.data(), 3, 3, nullptr), "kernel is null");
}

TEST(NullKernel, HasNoSizeAndNoValues) {
    EXPECT_EQ(velornKernelWidth(nullptr), 0);
    EXPECT_EQ(velornKernelHeight(nullptr), 0);
    EXPECT_EQ(velornKernelValues(nullptr), nullptr);
    velornFreeKernel(nullptr);
}

TEST(Kernels, AreMadeOnSeveralThreadsAtOnce) {
    const std::vector<float> expected =
        valuesOf(madeKernel(VELORN_BLUR_MOTION, 40.0f, 33.0f).get());
    std::vector<std::vector<float>> made(4);
    std::vector<std::thread> threads;
    for (std::vector<float>& values : made) {
        threads.emplace_back([&values] {
            for (int i = 0; i < 50; ++i) {
                values = valuesOf(madeKernel(VELORN_BLUR_MOTION, 40.0f, 33.0f).get());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::vector<float>& values : made) {
        EXPECT_EQ(values, expected);
    }
}

} // namespace
} // namespace velorntest
