#include "restoration/pipeline/restorePicture.h"

#include "restoration/failures/Failure.h"
#include "restoration/kernels/analyticKernel.h"
#include "tests/restoration/pipeline/testPictures.h"

#include <gtest/gtest.h>
#include <limits>

namespace restoration {
namespace {

using Kernels = std::vector<const Kernel*>;

const Kernel& disc() {
    static const Kernel kernel = analyticKernel(VELORN_BLUR_DISC, 2.5f, 0.0f);
    return kernel;
}

VelornRestoreSettings settingsFor(const VelornPicture& source, int threads = 2) {
    VelornRestoreSettings settings{};
    settings.size = sizeof settings;
    settings.strength = VELORN_AUTOMATIC;
    settings.chromaStrength = VELORN_AUTOMATIC;
    settings.alpha = VELORN_AUTOMATIC;
    settings.limit = VELORN_AUTOMATIC;
    settings.edgeRadius = 0.85f;
    settings.edgeGain = 1.0f;
    settings.edgeFloor = 0.005f;
    settings.noise = VELORN_AUTOMATIC;
    settings.continueFrame = 1;
    settings.recoverClipped = 1;
    settings.region = wholeOf(source);
    settings.threads = threads;
    return settings;
}

/// The result of a restoration into memory of its own.
std::vector<unsigned char> restored(const VelornPicture& source, const Kernels& kernels,
                                    const VelornRestoreSettings& settings) {
    VelornPicture format = source;
    format.width = settings.region.width;
    format.height = settings.region.height;
    const PictureBuffer target(format);
    restorePicture(source, target.picture(), kernels, settings);
    return bytesOf(target.picture());
}

constexpr PictureShape kShapes[] = {{601, 377, 3, false, VELORN_SAMPLES_U8},
                                    {377, 401, 4, true, VELORN_SAMPLES_U16},
                                    {555, 333, 2, true, VELORN_SAMPLES_F32},
                                    {300, 520, 1, false, VELORN_SAMPLES_U8},
                                    {430, 310, 2, false, VELORN_SAMPLES_U16}};

TEST(RestorePicture, WithoutKernelsAndStagesThePictureReturns) {
    for (const PictureShape& shape : kShapes) {
        const auto source = texturedPicture(shape);
        EXPECT_EQ(restored(source->picture(), {}, settingsFor(source->picture())),
                  bytesOf(source->picture()));
    }
}

TEST(RestorePicture, ARegionHasTheBytesOfTheWhole) {
    std::mt19937 random(3);
    for (const PictureShape& shape : kShapes) {
        const auto source = texturedPicture(shape);
        const VelornPicture& picture = source->picture();
        VelornRestoreSettings settings = settingsFor(picture);
        const PictureBuffer whole(picture);
        restorePicture(picture, whole.picture(), Kernels{&disc()}, settings);
        for (int i = 0; i < 6; ++i) {
            const auto below = [&](int end) {
                return std::uniform_int_distribution<int>(0, end - 1)(random);
            };
            VelornRegion& region = settings.region;
            region.x = below(picture.width);
            region.y = below(picture.height);
            region.width = 1 + below(picture.width - region.x);
            region.height = 1 + below(picture.height - region.y);
            EXPECT_EQ(restored(picture, {&disc()}, settings), bytesOf(whole.picture(), region));
        }
    }
}

TEST(RestorePicture, TheResultDoesNotDependOnTheNumberOfThreads) {
    const auto source = texturedPicture(kShapes[0]);
    const VelornPicture& picture = source->picture();
    const std::vector<unsigned char> one = restored(picture, {&disc()}, settingsFor(picture, 1));
    for (const int threads : {2, 3, 8}) {
        EXPECT_EQ(restored(picture, {&disc()}, settingsFor(picture, threads)), one);
    }
}

TEST(RestorePicture, SourceAndTargetMayBeTheSameMemory) {
    for (const PictureShape& shape : kShapes) {
        const auto source = texturedPicture(shape);
        const VelornPicture& picture = source->picture();
        const std::vector<unsigned char> apart =
            restored(picture, {&disc()}, settingsFor(picture));
        restorePicture(picture, picture, Kernels{&disc()}, settingsFor(picture));
        EXPECT_EQ(bytesOf(picture), apart);
    }
}

TEST(RestorePicture, ACancelledCallLeavesTheTargetUnchanged) {
    const auto source = texturedPicture(kShapes[0]);
    const VelornPicture& picture = source->picture();
    const std::vector<unsigned char> before = bytesOf(picture);
    struct Host {
        int calls = 0;
        int cancelAt = 0;
        double last = 0.0;
    };
    for (int cancelAt = 1;; ++cancelAt) {
        Host host{0, cancelAt};
        VelornRestoreSettings settings = settingsFor(picture);
        settings.userData = &host;
        settings.progress = [](double done, void* data) -> std::int32_t {
            Host& h = *static_cast<Host*>(data);
            h.last = done;
            return ++h.calls != h.cancelAt;
        };
        try {
            restorePicture(picture, picture, Kernels{&disc()}, settings);
            EXPECT_EQ(host.last, 1.0);
            break;
        } catch (const Failure& failure) {
            ASSERT_EQ(failure.status(), VELORN_STATUS_CANCELLED);
            ASSERT_EQ(host.calls, cancelAt);
            ASSERT_EQ(bytesOf(picture), before);
        }
    }
}

TEST(RestorePicture, TheTargetMayHaveOtherSamples) {
    const auto source = texturedPicture(kShapes[1]);
    const VelornPicture& picture = source->picture();
    VelornPicture format = picture;
    format.samples = VELORN_SAMPLES_F32;
    const PictureBuffer floats(format);
    restorePicture(picture, floats.picture(), Kernels{&disc()}, settingsFor(picture));
    const std::vector<unsigned char> words = restored(picture, {&disc()}, settingsFor(picture));
    const PictureBuffer rounded(picture);
    for (int y = 0; y < picture.height; ++y) {
        for (int c = 0; c < picture.channels; ++c) {
            std::vector<float> row(static_cast<std::size_t>(picture.width));
            PictureReader(floats.picture()).readChannel(c, y, 0, picture.width, row.data());
            PictureWriter(rounded.picture()).writeChannel(c, y, 0, picture.width, row.data());
        }
    }
    EXPECT_EQ(bytesOf(rounded.picture()), words);
}

TEST(RestorePicture, PicturesOfOnePixelOrOneRowAreRestored) {
    const Kernel point{1, 1, {1.0f}};
    const Kernel row{5, 1, {0.1f, 0.2f, 0.4f, 0.2f, 0.1f}};
    for (const int channels : {1, 2, 3, 4}) {
        const auto pixel = texturedPicture({1, 1, channels});
        EXPECT_FALSE(restored(pixel->picture(), {&point}, settingsFor(pixel->picture())).empty());
        const auto line = texturedPicture({300, 1, channels});
        EXPECT_FALSE(restored(line->picture(), {&row}, settingsFor(line->picture())).empty());
    }
}

TEST(RestorePicture, AFlatPictureStaysFlat) {
    const auto source = texturedPicture({700, 300, 3}, 0.0);
    const PictureWriter writer(source->picture());
    const std::vector<float> grey(700, 128.0f / 255.0f);
    for (int y = 0; y < 300; ++y) {
        writer.writeRow(y, 0, 700, std::vector<const float*>{grey.data(), grey.data(), grey.data()});
    }
    EXPECT_EQ(restored(source->picture(), {&disc()}, settingsFor(source->picture())),
              bytesOf(source->picture()));
}

} // namespace
} // namespace restoration
