#include "velorn.hpp"

#include <gtest/gtest.h>
#include <string>

namespace velorntest {
namespace {

namespace api = velorn::api;

template <class Call>
VelornStatus statusOf(const Call& call, const std::string& message) {
    try {
        call();
        return VELORN_STATUS_OK;
    } catch (const api::Failure& failure) {
        EXPECT_EQ(failure.what(), message);
        return failure.status();
    }
}

TEST(Wrapper, CopiesOfAKernelShareItsValues) {
    api::Kernel copy = api::Kernel::of(VELORN_BLUR_DISC, 2.0f);
    {
        const api::Kernel kernel = api::Kernel::of(VELORN_BLUR_MOTION, 5.0f, 0.0f);
        copy = kernel;
        EXPECT_EQ(copy.values(), kernel.values());
    }
    EXPECT_EQ(copy.width(), 5);
    EXPECT_EQ(copy.height(), 1);
    EXPECT_FLOAT_EQ(copy.values()[4], 0.2f);
}

TEST(Wrapper, KernelsAreMadeFromValues) {
    const float values[] = {1, 2, 1};
    const api::Kernel kernel = api::Kernel::fromValues(values, 1, 3);
    EXPECT_EQ(kernel.height(), 3);
    EXPECT_EQ(kernel.values()[1], 0.5f);
}

TEST(Wrapper, FailuresHaveTheStatusAndTheMessage) {
    EXPECT_EQ(statusOf([] { api::Kernel::of(VELORN_BLUR_DISC, -1.0f); },
                       "extent is -1, but must be above 0"),
              VELORN_STATUS_INVALID_ARGUMENT);
    EXPECT_EQ(statusOf([] { api::Kernel::of(VELORN_BLUR_DISC, 1000.0f); },
                       "a side of the kernel is longer than 511 pixels"),
              VELORN_STATUS_KERNEL_TOO_LARGE);
}

TEST(Wrapper, PicturesHaveTheTypeOfTheirSamples) {
    std::vector<std::uint8_t> bytes(24);
    const VelornPicture picture = api::pictureOf(bytes.data(), 4, 2, 3);
    EXPECT_EQ(picture.data, bytes.data());
    EXPECT_EQ(picture.rowStride, 12);
    EXPECT_EQ(picture.width, 4);
    EXPECT_EQ(picture.height, 2);
    EXPECT_EQ(picture.channels, 3);
    EXPECT_EQ(picture.hasAlpha, 0);
    EXPECT_EQ(picture.samples, VELORN_SAMPLES_U8);

    const std::vector<std::uint16_t> words(24);
    EXPECT_EQ(api::pictureOf(words.data(), 4, 3, 2, true).samples, VELORN_SAMPLES_U16);
    EXPECT_EQ(api::pictureOf(words.data(), 4, 3, 2, true).hasAlpha, 1);
    EXPECT_EQ(api::pictureOf(words.data(), 4, 3, 2, true).rowStride, 16);

    const std::vector<float> floats(24);
    EXPECT_EQ(api::pictureOf(floats.data(), 2, 3, 4, true, -48).rowStride, -48);
    EXPECT_EQ(api::pictureOf(floats.data(), 2, 3, 4).samples, VELORN_SAMPLES_F32);
}

TEST(Wrapper, SettingsHaveTheirDefaults) {
    EXPECT_EQ(api::restoreSettings().strength, VELORN_AUTOMATIC);
    EXPECT_EQ(api::findSettings().size, sizeof(VelornFindSettings));
}

TEST(Wrapper, NoiseIsMeasured) {
    const std::vector<std::uint8_t> constant(3 * 64 * 64, 100);
    EXPECT_NEAR(api::noise(api::pictureOf(constant.data(), 64, 64, 3)).channels[2], 0.2887, 1e-3);
    EXPECT_EQ(statusOf([&] { api::noise(api::pictureOf(constant.data(), 0, 64, 3)); },
                       "picture->width is 0, but must be 1..1073741824"),
              VELORN_STATUS_INVALID_ARGUMENT);
}

} // namespace
} // namespace velorntest
