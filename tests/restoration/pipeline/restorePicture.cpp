#include "restoration/pipeline/restorePicture.h"

#include "restoration/failures/Failure.h"
#include "restoration/kernels/analyticKernel.h"
#include "restoration/light/ToneCurve.h"
#include "tests/restoration/clipping/LampScene.h"
#include "tests/restoration/pipeline/FailingNew.h"
#include "tests/restoration/pipeline/testPictures.h"

#include <algorithm>
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
        const VelornPicture& picture = source->picture();
        if (shape.samples != VELORN_SAMPLES_F32) {
            EXPECT_EQ(restored(picture, {}, settingsFor(picture)), bytesOf(picture));
            continue;
        }
        const PictureBuffer target(picture);
        restorePicture(picture, target.picture(), Kernels{}, settingsFor(picture));
        EXPECT_LT(largestDifference(target.picture(), picture, wholeOf(picture)), 3e-7f);
    }
}

/// The picture of a kernel's blur; its frame repeats the picture's border.
std::unique_ptr<PictureBuffer> blurred(const VelornPicture& picture, const Kernel& kernel) {
    auto result = std::make_unique<PictureBuffer>(picture);
    const auto width = static_cast<std::size_t>(picture.width);
    std::vector<float> row(width);
    for (int c = 0; c < picture.channels; ++c) {
        for (int y = 0; y < picture.height; ++y) {
            std::vector<float> sums(width, 0.0f);
            for (int ky = 0; ky < kernel.height; ++ky) {
                const int from = std::clamp(y + kernel.height / 2 - ky, 0, picture.height - 1);
                PictureReader(picture).readChannel(c, from, 0, picture.width, row.data());
                for (int kx = 0; kx < kernel.width; ++kx) {
                    for (int x = 0; x < picture.width; ++x) {
                        const int at = std::clamp(x + kernel.width / 2 - kx, 0, picture.width - 1);
                        sums[static_cast<std::size_t>(x)] +=
                            kernel.at(ky, kx) * row[static_cast<std::size_t>(at)];
                    }
                }
            }
            PictureWriter(result->picture()).writeChannel(c, y, 0, picture.width, sums.data());
        }
    }
    return result;
}

/// Adds normal noise of `noise` levels of 255.
void addNoise(const VelornPicture& picture, float noise) {
    std::mt19937 random(23);
    std::normal_distribution<float> error(0.0f, 1.0f);
    std::vector<float> row(static_cast<std::size_t>(picture.width));
    for (int y = 0; y < picture.height; ++y) {
        for (int c = 0; c < picture.channels; ++c) {
            PictureReader(picture).readChannel(c, y, 0, picture.width, row.data());
            for (float& value : row) {
                value += (noise / 255.0f) * error(random);
            }
            PictureWriter(picture).writeChannel(c, y, 0, picture.width, row.data());
        }
    }
}

TEST(RestorePicture, RestoresABlurredPicture) {
    for (const int channels : {1, 2, 3, 4}) {
        const auto sharp = texturedPicture({420, 280, channels, false, VELORN_SAMPLES_F32}, 0.0);
        const auto soft = blurred(sharp->picture(), disc());
        const PictureBuffer target(sharp->picture());
        restorePicture(soft->picture(), target.picture(), Kernels{&disc()},
                       settingsFor(soft->picture()));
        const VelornRegion inner{20, 20, 380, 240};
        const double before = meanSquare(soft->picture(), sharp->picture(), inner);
        const double after = meanSquare(target.picture(), sharp->picture(), inner);
        EXPECT_LT(after, 0.1 * before) << channels;
    }
}

TEST(RestorePicture, AKernelOfLittleTrustIsMixedWithThePicture) {
    const auto sharp = texturedPicture({420, 280, 3, false, VELORN_SAMPLES_F32}, 0.0);
    const auto soft = blurred(sharp->picture(), disc());
    const VelornPicture& picture = soft->picture();
    const auto restoredWith = [&](float share, const VelornRestoreSettings& settings) {
        Kernel kernel = disc();
        kernel.trust.share = share;
        auto target = std::make_unique<PictureBuffer>(picture);
        restorePicture(picture, target->picture(), Kernels{&kernel}, settings);
        return target;
    };
    VelornRestoreSettings settings = settingsFor(picture);
    const auto all = restoredWith(1.0f, settings);
    const auto part = restoredWith(0.25f, settings);
    const VelornRegion whole = wholeOf(picture);
    const float moved = largestDifference(all->picture(), picture, whole);
    EXPECT_GT(moved, 0.05f);
    EXPECT_NEAR(largestDifference(part->picture(), picture, whole), 0.25f * moved, 1e-5f);
    EXPECT_LT(largestDifference(restoredWith(0.0f, settings)->picture(), picture, whole), 1e-6f);
    // A given strength is a host's own choice.
    settings.strength = 500.0f;
    EXPECT_EQ(largestDifference(restoredWith(0.25f, settings)->picture(),
                                restoredWith(1.0f, settings)->picture(), whole),
              0.0f);
}

TEST(RestorePicture, AReportedChromaStrengthGivesTheSameBytes) {
    const auto source = texturedPicture({500, 320, 3});
    const VelornPicture& picture = source->picture();
    VelornRestoreSettings settings = settingsFor(picture);
    const PictureBuffer target(picture);
    const VelornRestoreReport report =
        restorePicture(picture, target.picture(), Kernels{&disc()}, settings);
    settings.chromaStrength = report.chromaStrength;
    EXPECT_EQ(restored(picture, {&disc()}, settings), bytesOf(target.picture()));
    settings.chromaStrength = 0.2f * report.chromaStrength;
    EXPECT_NE(restored(picture, {&disc()}, settings), bytesOf(target.picture()));
}

/// The mean square of the difference of red and green between two pictures.
double colourError(const VelornPicture& a, const VelornPicture& b, const VelornRegion& part) {
    const auto width = static_cast<std::size_t>(part.width);
    double sum = 0.0;
    for (int y = part.y; y < part.y + part.height; ++y) {
        std::vector<float> rows[4];
        for (int i = 0; i < 4; ++i) {
            rows[i].resize(width);
            PictureReader(i < 2 ? a : b).readChannel(i % 2, y, part.x, part.width, rows[i].data());
        }
        for (std::size_t x = 0; x < width; ++x) {
            const double error =
                static_cast<double>((rows[0][x] - rows[1][x]) - (rows[2][x] - rows[3][x]));
            sum += error * error;
        }
    }
    return sum;
}

TEST(RestorePicture, ColoursOfANoisyPictureComeNearerToTheSharpOnes) {
    const auto sharp = texturedPicture({420, 280, 3, false, VELORN_SAMPLES_F32}, 0.0);
    const auto soft = blurred(sharp->picture(), disc());
    std::mt19937 random(5);
    std::normal_distribution<float> noise(0.0f, 6.0f / 255.0f);
    std::vector<float> row(420);
    for (int y = 0; y < 280; ++y) {
        for (int c = 0; c < 3; ++c) {
            PictureReader(soft->picture()).readChannel(c, y, 0, 420, row.data());
            std::ranges::for_each(row, [&](float& value) { value += noise(random); });
            PictureWriter(soft->picture()).writeChannel(c, y, 0, 420, row.data());
        }
    }
    const PictureBuffer target(sharp->picture());
    VelornRestoreSettings settings = settingsFor(sharp->picture());
    restorePicture(soft->picture(), target.picture(), Kernels{&disc()}, settings);
    const VelornRegion inner{20, 20, 380, 240};
    EXPECT_LT(colourError(target.picture(), sharp->picture(), inner),
              0.3 * colourError(soft->picture(), sharp->picture(), inner));
}

TEST(RestorePicture, OneKernelForEachChannelRestoresEachWithItsOwn) {
    const Kernel wide = analyticKernel(VELORN_BLUR_DISC, 4.5f, 0.0f);
    const auto sharp = texturedPicture({300, 280, 3, false, VELORN_SAMPLES_F32}, 0.0);
    const auto soft = blurred(sharp->picture(), disc());
    const auto softer = blurred(sharp->picture(), wide);
    std::vector<float> row(300);
    for (int y = 0; y < 280; ++y) {
        PictureReader(softer->picture()).readChannel(1, y, 0, 300, row.data());
        PictureWriter(soft->picture()).writeChannel(1, y, 0, 300, row.data());
    }
    const PictureBuffer target(sharp->picture());
    restorePicture(soft->picture(), target.picture(), Kernels{&disc(), &wide, &disc()},
                   settingsFor(soft->picture()));
    const VelornRegion inner{20, 20, 260, 240};
    EXPECT_LT(meanSquare(target.picture(), sharp->picture(), inner),
              0.1 * meanSquare(soft->picture(), sharp->picture(), inner));
}

TEST(RestorePicture, ASmoothPictureShowsNoTiles) {
    const PictureBuffer sharp(formatOf({1300, 700, 3, false, VELORN_SAMPLES_F32}));
    std::vector<float> row(1300);
    for (int y = 0; y < 700; ++y) {
        for (int c = 0; c < 3; ++c) {
            for (int x = 0; x < 1300; ++x) {
                row[static_cast<std::size_t>(x)] = static_cast<float>(
                    0.5 + 0.3 * std::sin(0.01 * x + 0.3 * c) * std::cos(0.013 * y));
            }
            PictureWriter(sharp.picture()).writeChannel(c, y, 0, 1300, row.data());
        }
    }
    const auto soft = blurred(sharp.picture(), disc());
    const PictureBuffer target(sharp.picture());
    VelornRestoreSettings settings = settingsFor(sharp.picture());
    settings.noise = 1.0f;
    restorePicture(soft->picture(), target.picture(), Kernels{&disc()}, settings);
    EXPECT_LT(largestDifference(target.picture(), sharp.picture(), {20, 20, 1260, 660}),
              0.4f / 255.0f);
}

TEST(RestorePicture, ARegionHasTheBytesOfTheWhole) {
    std::mt19937 random(3);
    for (const PictureShape& shape : kShapes) {
        const auto source = texturedPicture(shape);
        const VelornPicture& picture = source->picture();
        VelornRestoreSettings settings = settingsFor(picture);
        const PictureBuffer whole(picture);
        restorePicture(picture, whole.picture(), Kernels{&disc()}, settings);
        for (int i = 0; i < 4; ++i) {
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

TEST(RestorePicture, EachQualityComesCloserToTheSharpPicture) {
    for (const int channels : {1, 2, 3}) {
        const auto sharp = texturedPicture({420, 280, channels, false, VELORN_SAMPLES_F32}, 0.0);
        const auto soft = blurred(sharp->picture(), disc());
        addNoise(soft->picture(), 2.0f);
        VelornRestoreSettings settings = settingsFor(soft->picture());
        const auto errorOf = [&](VelornQuality quality) {
            settings.quality = quality;
            const PictureBuffer result(sharp->picture());
            restorePicture(soft->picture(), result.picture(), Kernels{&disc()}, settings);
            return meanSquare(result.picture(), sharp->picture(), {20, 20, 380, 240});
        };
        const double fast = errorOf(VELORN_QUALITY_FAST);
        const double normal = errorOf(VELORN_QUALITY_NORMAL);
        EXPECT_LT(normal, 0.85 * fast) << channels;
        EXPECT_LT(errorOf(VELORN_QUALITY_BEST), 0.95 * normal) << channels;
    }
}

TEST(RestorePicture, BestQualityOfARegionHasTheBytesOfTheWhole) {
    for (const PictureShape& shape : kShapes) {
        const auto source = texturedPicture(shape);
        const VelornPicture& picture = source->picture();
        VelornRestoreSettings settings = settingsFor(picture);
        settings.quality = VELORN_QUALITY_BEST;
        settings.light = shape.channels % 2 == 1 ? VELORN_LIGHT_LINEAR : VELORN_LIGHT_DISPLAY;
        const PictureBuffer whole(picture);
        restorePicture(picture, whole.picture(), Kernels{&disc()}, settings);
        settings.region = {picture.width / 3, picture.height / 2, picture.width / 2,
                           picture.height / 3};
        EXPECT_EQ(restored(picture, {&disc()}, settings),
                  bytesOf(whole.picture(), settings.region));
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

/// A grey picture of a dark scene with a lamp, blurred in light and stored by the curve of sRGB.
struct NightPicture {
    NightPicture() {
        constexpr int kSide = 160;
        Plane scene = test::darkScene(kSide);
        test::addLamp(scene, 60, 70, 1.5, 15.0f);
        Plane image = test::blurred(scene, disc());
        const ToneCurve curve = ToneCurve::sRgb();
        std::mt19937 random(5);
        std::normal_distribution<float> error(0.0f, 0.5f / 255.0f);
        for (float& value : image.values()) {
            value = curve.display(value) + error(random);
        }
        curve.toDisplay(scene.values());
        store(image, blurred);
        store(scene, sharp);
    }

    static void store(const Plane& plane, const PictureBuffer& picture) {
        for (int y = 0; y < plane.height(); ++y) {
            PictureWriter(picture.picture()).writeChannel(0, y, 0, plane.width(), plane.row(y));
        }
    }

    PictureBuffer blurred{formatOf({160, 160, 1})};
    PictureBuffer sharp{formatOf({160, 160, 1})};
};

TEST(RestorePicture, ALampLeavesNoRings) {
    const NightPicture night;
    const VelornPicture& picture = night.blurred.picture();
    const PictureBuffer result(picture);
    // 20 pixels above the lamp, where nothing but rings can come from it.
    const VelornRegion part{40, 35, 40, 20};
    VelornRestoreSettings settings = settingsFor(picture);
    settings.light = VELORN_LIGHT_LINEAR;
    settings.recoverClipped = 0;
    VelornRestoreReport report =
        restorePicture(picture, result.picture(), Kernels{&disc()}, settings);
    EXPECT_EQ(report.clippedShare, 0.0);
    const double ringing = meanSquare(result.picture(), night.sharp.picture(), part);
    settings.recoverClipped = 1;
    report = restorePicture(picture, result.picture(), Kernels{&disc()}, settings);
    EXPECT_GT(report.clippedShare, 30.0 / (160 * 160));
    EXPECT_LT(report.clippedShare, 150.0 / (160 * 160));
    EXPECT_LT(meanSquare(result.picture(), night.sharp.picture(), part), 0.05 * ringing);
}

TEST(RestorePicture, ALampHasNoDarkCentre) {
    constexpr int kSide = 160;
    constexpr int kCentre = 70;
    Plane scene = test::darkScene(kSide);
    test::addLamp(scene, kCentre, kCentre, 6.0, 20.0f);
    const Plane image = test::blurred(scene, disc());
    const PictureBuffer blurred(formatOf({kSide, kSide, 1}));
    NightPicture::store(image, blurred);
    const PictureBuffer result(blurred.picture());
    const VelornRestoreSettings settings = settingsFor(blurred.picture());
    restorePicture(blurred.picture(), result.picture(), Kernels{&disc()}, settings);
    std::vector<float> row(kSide);
    for (int y = kCentre - 3; y <= kCentre + 3; ++y) {
        PictureReader(result.picture()).readChannel(0, y, 0, kSide, row.data());
        for (int x = kCentre - 3; x <= kCentre + 3; ++x) {
            EXPECT_EQ(row[static_cast<std::size_t>(x)], 1.0f) << x << ", " << y;
        }
    }
}

TEST(RestorePicture, TheModelOfTheBlurIsChosenByThePicture) {
    const NightPicture night;
    const VelornPicture& picture = night.blurred.picture();
    VelornRestoreSettings settings = settingsFor(picture);
    settings.light = VELORN_LIGHT_LINEAR;
    const std::vector<unsigned char> linear = restored(picture, {&disc()}, settings);
    settings.light = VELORN_LIGHT_DISPLAY;
    const std::vector<unsigned char> display = restored(picture, {&disc()}, settings);
    EXPECT_NE(linear, display);

    // Textured pictures are blurred as stored.
    const auto textured = texturedPicture(kShapes[0]);
    settings = settingsFor(textured->picture());
    settings.light = VELORN_LIGHT_AUTOMATIC;
    const PictureBuffer result(textured->picture());
    const VelornRestoreReport report =
        restorePicture(textured->picture(), result.picture(), Kernels{&disc()}, settings);
    EXPECT_EQ(report.light, VELORN_LIGHT_DISPLAY);
}

TEST(RestorePicture, AnUnusableProfileIsRefusedInLinearLightOnly) {
    const auto source = texturedPicture(kShapes[0]);
    const VelornPicture& picture = source->picture();
    VelornRestoreSettings settings = settingsFor(picture);
    const char profile[] = "no profile";
    settings.profile = profile;
    settings.profileSize = sizeof profile;
    settings.light = VELORN_LIGHT_LINEAR;
    try {
        restored(picture, {&disc()}, settings);
        ADD_FAILURE() << "not refused";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status(), VELORN_STATUS_INVALID_ARGUMENT);
    }
    settings.light = VELORN_LIGHT_DISPLAY;
    const auto display = restored(picture, {&disc()}, settings);
    settings.light = VELORN_LIGHT_AUTOMATIC;
    EXPECT_EQ(restored(picture, {&disc()}, settings), display);
}

TEST(RestorePicture, SourceAndTargetMayBeTheSameMemory) {
    for (const PictureShape& shape : kShapes) {
        const auto source = texturedPicture(shape);
        const VelornPicture& picture = source->picture();
        const std::vector<unsigned char> apart = restored(picture, {&disc()}, settingsFor(picture));
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

TEST(RestorePicture, WithoutMemoryTheTargetStaysAsItIs) {
    const auto source = texturedPicture({40, 30});
    const VelornPicture& picture = source->picture();
    const std::vector<unsigned char> before = bytesOf(picture);
    const Kernels kernels{&disc()}; // made while there is memory
    // The first allocations one by one, later ones in growing steps.
    for (int succeeding = 0;; succeeding += 1 + succeeding / 16) {
        const FailingNew memory(succeeding);
        try {
            restorePicture(picture, picture, kernels, settingsFor(picture));
        } catch (const std::bad_alloc&) {
            ASSERT_EQ(bytesOf(picture), before) << succeeding;
            continue;
        }
        ASSERT_FALSE(memory.hasFailed()) << succeeding;
        ASSERT_GT(succeeding, 50);
        break;
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

/// Mean square of the difference of horizontal neighbours in the first channel.
double contrastOf(const VelornPicture& picture) {
    VelornPicture shifted = picture;
    shifted.data = pixelAt(picture, 1, 0);
    shifted.width = picture.width - 1;
    return meanSquare(picture, shifted, {0, 0, picture.width - 1, picture.height});
}

TEST(RestorePicture, TheLimiterRemovesOvershoot) {
    const auto source = texturedPicture({320, 260, 1, false, VELORN_SAMPLES_F32}, 3.0);
    VelornRestoreSettings settings = settingsFor(source->picture());
    settings.strength = 50000.0f;
    const PictureBuffer target(source->picture());
    const auto contrast = [&](float limit) {
        settings.limit = limit;
        restorePicture(source->picture(), target.picture(), Kernels{&disc()}, settings);
        return contrastOf(target.picture());
    };
    const double unlimited = contrast(0.0f);
    EXPECT_LT(contrast(1.0f), 0.8 * unlimited);
}

TEST(RestorePicture, SharpeningAndDetailNeedNoKernel) {
    const auto source = texturedPicture({320, 260, 3, false, VELORN_SAMPLES_F32});
    const VelornPicture& picture = source->picture();
    const PictureBuffer target(picture);
    VelornRestoreSettings sharpening = settingsFor(picture);
    sharpening.edgeGain = 2.0f;
    restorePicture(picture, target.picture(), Kernels{}, sharpening);
    EXPECT_GT(contrastOf(target.picture()), 1.2 * contrastOf(picture));
    VelornRestoreSettings enhancing = settingsFor(picture);
    enhancing.detailGain = 1.0f;
    restorePicture(picture, target.picture(), Kernels{}, enhancing);
    EXPECT_GT(contrastOf(target.picture()), 1.05 * contrastOf(picture));
}

TEST(RestorePicture, SharpeningLeavesChromaAlone) {
    const auto source = texturedPicture({320, 260, 3, false, VELORN_SAMPLES_F32});
    const VelornPicture& picture = source->picture();
    const PictureBuffer target(picture);
    VelornRestoreSettings settings = settingsFor(picture);
    settings.edgeSlope = 3.0f;
    settings.detailGain = 0.5f;
    restorePicture(picture, target.picture(), Kernels{}, settings);
    // The difference of two colours is a function of chroma.
    const auto colourDifference = [](const VelornPicture& shown, int y) {
        std::vector<float> red(320);
        std::vector<float> blue(320);
        PictureReader(shown).readChannel(0, y, 0, 320, red.data());
        PictureReader(shown).readChannel(2, y, 0, 320, blue.data());
        for (std::size_t x = 0; x < red.size(); ++x) {
            red[x] -= blue[x];
        }
        return red;
    };
    for (int y = 0; y < 260; ++y) {
        const std::vector<float> before = colourDifference(picture, y);
        const std::vector<float> after = colourDifference(target.picture(), y);
        for (std::size_t x = 0; x < before.size(); ++x) {
            ASSERT_NEAR(after[x], before[x], 1e-5f);
        }
    }
}

TEST(RestorePicture, FloatsOfAnySizeAndExtremeSettingsReturn) {
    const auto source = texturedPicture({200, 150, 3, false, VELORN_SAMPLES_F32});
    const VelornPicture& picture = source->picture();
    const std::vector<float> odd{std::numeric_limits<float>::quiet_NaN(),
                                 std::numeric_limits<float>::infinity(),
                                 std::numeric_limits<float>::max(), -1e30f, 1e-42f};
    PictureWriter(picture).writeRow(70, 80, 5,
                                    std::vector<const float*>{odd.data(), odd.data(), odd.data()});
    VelornRestoreSettings settings = settingsFor(picture);
    settings.edgeSlope = 20.0f;
    settings.detailGamma = 3.0f;
    for (const float strength :
         {std::numeric_limits<float>::denorm_min(), 1.0f, std::numeric_limits<float>::max()}) {
        settings.strength = strength;
        settings.chromaStrength = strength;
        EXPECT_FALSE(restored(picture, {&disc()}, settings).empty());
    }
}

TEST(RestorePicture, ExtremeStrengthsGiveFiniteResults) {
    const auto source = texturedPicture({200, 150, 3, false, VELORN_SAMPLES_F32});
    const VelornPicture& picture = source->picture();
    const PictureBuffer target(picture);
    VelornRestoreSettings settings = settingsFor(picture);
    for (const float strength :
         {std::numeric_limits<float>::denorm_min(), std::numeric_limits<float>::max()}) {
        settings.strength = strength;
        settings.chromaStrength = strength;
        restorePicture(picture, target.picture(), Kernels{&disc()}, settings);
        bool isFinite = true;
        for (int y = 0; y < picture.height; ++y) {
            const auto* row = reinterpret_cast<const float*>(pixelAt(target.picture(), 0, y));
            isFinite = isFinite && std::all_of(row, row + 600, [](float v) { return v - v == 0; });
        }
        EXPECT_TRUE(isFinite) << strength;
    }
}

TEST(RestorePicture, AFlatPictureStaysFlat) {
    const auto source = texturedPicture({700, 300, 3}, 0.0);
    const PictureWriter writer(source->picture());
    const std::vector<float> grey(700, 128.0f / 255.0f);
    for (int y = 0; y < 300; ++y) {
        writer.writeRow(y, 0, 700,
                        std::vector<const float*>{grey.data(), grey.data(), grey.data()});
    }
    EXPECT_EQ(restored(source->picture(), {&disc()}, settingsFor(source->picture())),
              bytesOf(source->picture()));
}

/// Discs that differ a little, therefore tiles have kernels of their own.
KernelGrid gridWithShares(float left, float right) {
    std::vector<Kernel> kernels{analyticKernel(VELORN_BLUR_DISC, 2.5f, 0.0f),
                                analyticKernel(VELORN_BLUR_DISC, 2.55f, 0.0f)};
    kernels[0].trust.share = left;
    kernels[1].trust.share = right;
    return {std::move(kernels), 2, 1};
}

std::unique_ptr<PictureBuffer> restored(const VelornPicture& source, const KernelGrid& grid,
                                        const VelornRestoreSettings& settings) {
    auto target = std::make_unique<PictureBuffer>(source);
    restorePicture(source, target->picture(), grid, settings);
    return target;
}

constexpr PictureShape kWideShape{760, 140, 3, false, VELORN_SAMPLES_F32};
constexpr VelornRegion kLeftEnd{0, 0, 120, 140};
constexpr VelornRegion kRightEnd{640, 0, 120, 140};

TEST(RestoreLocally, AHalfShareGivesTheMeanOfPictureAndRestoration) {
    const auto source = texturedPicture(kWideShape);
    const VelornPicture& picture = source->picture();
    const auto half = restored(picture, gridWithShares(0.5f, 0.5f), settingsFor(picture));
    const auto full = restored(picture, gridWithShares(1.0f, 1.0f), settingsFor(picture));
    const auto width = static_cast<std::size_t>(picture.width);
    std::vector<float> mixed(width);
    std::vector<float> sharp(width);
    std::vector<float> stored(width);
    for (int y = 0; y < picture.height; ++y) {
        PictureReader(half->picture()).readChannel(1, y, 0, picture.width, mixed.data());
        PictureReader(full->picture()).readChannel(1, y, 0, picture.width, sharp.data());
        PictureReader(picture).readChannel(1, y, 0, picture.width, stored.data());
        for (std::size_t x = 0; x < width; ++x) {
            ASSERT_NEAR(mixed[x], 0.5f * (sharp[x] + stored[x]), 1e-5f) << x << " " << y;
        }
    }
}

TEST(RestoreLocally, EachPlaceHasTheShareOfItsCells) {
    const auto source = texturedPicture(kWideShape);
    const VelornPicture& picture = source->picture();
    const auto result = restored(picture, gridWithShares(0.0f, 1.0f), settingsFor(picture));
    const auto full = restored(picture, gridWithShares(1.0f, 1.0f), settingsFor(picture));
    EXPECT_LT(largestDifference(result->picture(), picture, kLeftEnd), 1e-6f);
    EXPECT_LT(largestDifference(result->picture(), full->picture(), kRightEnd), 1e-6f);
    EXPECT_GT(largestDifference(full->picture(), picture, kLeftEnd), 0.05f);
}

TEST(RestoreLocally, AStrengthOfTheHostIsNotMixedWithThePicture) {
    const auto source = texturedPicture(kWideShape);
    const VelornPicture& picture = source->picture();
    VelornRestoreSettings settings = settingsFor(picture);
    settings.strength = 300.0f;
    const auto none = restored(picture, gridWithShares(0.0f, 0.0f), settings);
    const auto full = restored(picture, gridWithShares(1.0f, 1.0f), settings);
    EXPECT_EQ(bytesOf(none->picture()), bytesOf(full->picture()));
    EXPECT_GT(largestDifference(none->picture(), picture, kLeftEnd), 0.05f);
}

} // namespace
} // namespace restoration
