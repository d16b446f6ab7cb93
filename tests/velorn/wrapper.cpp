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

std::vector<std::uint8_t> pattern(int side) {
    std::vector<std::uint8_t> samples;
    for (int i = 0; i < side * side; ++i) {
        samples.push_back(static_cast<std::uint8_t>((i / 5 + i / side / 4) % 2 * 90 + 60 + i % 7));
    }
    return samples;
}

TEST(Wrapper, PicturesAreRestored) {
    const std::vector<std::uint8_t> source = pattern(64);
    std::vector<float> target(64 * 64, -1.0f);
    std::vector<double> reports;
    VelornRestoreSettings settings = api::restoreSettings();
    settings.strength = 2000.0f;
    const VelornRestoreReport report = api::restore(
        api::pictureOf(source.data(), 64, 64, 1), api::pictureOf(target.data(), 64, 64, 1),
        {api::Kernel::of(VELORN_BLUR_GAUSSIAN, 1.0f)}, settings, [&](double done) {
            reports.push_back(done);
            return true;
        });
    EXPECT_EQ(report.strength, 2000.0f);
    EXPECT_EQ(reports.back(), 1.0);
    EXPECT_GT(target.front(), -1.0f);
}

TEST(Wrapper, ProgressFunctionsCancel) {
    std::vector<std::uint8_t> picture = pattern(64);
    const VelornPicture view = api::pictureOf(picture.data(), 64, 64, 1);
    EXPECT_EQ(statusOf(
                  [&] {
                      api::restore(view, view, {}, api::restoreSettings(),
                                   [](double) { return false; });
                  },
                  "cancelled"),
              VELORN_STATUS_CANCELLED);
    EXPECT_EQ(picture, pattern(64));
}

TEST(Wrapper, ExceptionsOfProgressFunctionsLeaveTheCall) {
    std::vector<std::uint8_t> picture = pattern(64);
    const VelornPicture view = api::pictureOf(picture.data(), 64, 64, 1);
    const api::Progress fail = [](double) -> bool { throw std::out_of_range("closed"); };
    EXPECT_THROW(api::restore(view, view, {}, api::restoreSettings(), fail), std::out_of_range);
    EXPECT_THROW(api::findKernel(view, api::findSettings(), fail), std::out_of_range);
    EXPECT_EQ(picture, pattern(64));
}

TEST(Wrapper, KernelsAreFound) {
    const std::vector<std::uint8_t> picture = pattern(96);
    VelornFindSettings settings = api::findSettings();
    settings.maxWidth = 7;
    const api::FoundKernel found =
        api::findKernel(api::pictureOf(picture.data(), 96, 96, 1), settings);
    EXPECT_LE(found.kernel.width(), 7);
    EXPECT_GE(found.report.confidence, 0.0f);
    const std::vector<std::uint8_t> constant(96 * 96, 9);
    EXPECT_EQ(statusOf([&] { api::findKernel(api::pictureOf(constant.data(), 96, 96, 1)); },
                       "the picture has too few edges to find a kernel"),
              VELORN_STATUS_NO_KERNEL);
}

TEST(Wrapper, CandidatesAreFound) {
    const std::vector<std::uint8_t> picture = pattern(96);
    const VelornPicture view = api::pictureOf(picture.data(), 96, 96, 1);
    const std::vector<api::FoundKernel> found = api::findCandidates(view);
    ASSERT_FALSE(found.empty());
    EXPECT_EQ(found.front().report.candidates, static_cast<int>(found.size()));
    const api::FoundKernel first = api::findKernel(view);
    EXPECT_EQ(first.kernel.width(), found.front().kernel.width());
    EXPECT_EQ(first.report.confidence, found.front().report.confidence);
    EXPECT_EQ(
        statusOf(
            [&] { api::findCandidates(view, api::findSettings(), [](double) { return false; }); },
            "cancelled"),
        VELORN_STATUS_CANCELLED);
}

} // namespace
} // namespace velorntest
