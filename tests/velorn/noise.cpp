#include "tests/velorn/failure.h"
#include "tests/velorn/HostPicture.h"

#include <cmath>
#include <random>
#include <string>
#include <thread>

namespace velorntest {
namespace {

VelornNoiseReport emptyReport() {
    VelornNoiseReport report{};
    report.size = sizeof report;
    return report;
}

VelornNoiseReport noiseOf(HostPicture& picture) {
    VelornNoiseReport report = emptyReport();
    const VelornPicture view = picture.view();
    EXPECT_EQ(velornNoise(&view, &report), VELORN_STATUS_OK) << velornLastMessage();
    return report;
}

/// A gradient. Channel c has noise of `c + 1` levels, alpha has more.
HostPicture noisyPicture(const Layout& layout) {
    std::mt19937 random(1);
    std::normal_distribution<double> normal(0.0, 1.0 / 255.0);
    HostPicture picture(layout);
    for (int y = 0; y < layout.height; ++y) {
        for (int x = 0; x < layout.width; ++x) {
            for (int c = 0; c < layout.channels; ++c) {
                picture.set(x, y, c, 0.3 + 0.001 * (x + y) + (c + 1) * normal(random));
            }
        }
    }
    return picture;
}

TEST(Noise, IsMeasuredInEachColourChannel) {
    for (const VelornSamples samples :
         {VELORN_SAMPLES_U8, VELORN_SAMPLES_U16, VELORN_SAMPLES_F32}) {
        for (const int channels : {1, 2, 3, 4}) {
            for (const bool hasAlpha : {false, true}) {
                if (channels == 1 && hasAlpha) {
                    continue;
                }
                HostPicture picture =
                    noisyPicture({200, 200, channels, hasAlpha, samples, 3, true, 1});
                const VelornNoiseReport report = noiseOf(picture);
                for (int c = 0; c < 4; ++c) {
                    const double expected = c < channels - (hasAlpha ? 1 : 0) ? c + 1 : 0;
                    EXPECT_NEAR(report.channels[c], expected, 0.1 * expected) << c;
                }
            }
        }
    }
}

TEST(Noise, OfGreyPicturesIsThatOfTheirChannel) {
    HostPicture picture = noisyPicture({300, 300, 2, true, VELORN_SAMPLES_U16, 0, false, 0});
    const VelornNoiseReport report = noiseOf(picture);
    EXPECT_EQ(report.luminance, report.channels[0]);
}

TEST(Noise, WrongArgumentsFailAndLeaveTheReportUnchanged) {
    HostPicture picture({8, 8, 3, false, VELORN_SAMPLES_U8, 0, false, 0});
    const VelornPicture view = picture.view();
    VelornNoiseReport report = emptyReport();
    report.luminance = 9.0f;
    EXPECT_VELORN_INVALID(velornNoise(nullptr, &report), "picture is null");
    EXPECT_VELORN_INVALID(velornNoise(&view, nullptr), "report is null");
    report.size = 3;
    EXPECT_VELORN_INVALID(velornNoise(&view, &report),
                          "report->size is 3, but must be 24, the size of the record");
    EXPECT_EQ(report.luminance, 9.0f);
}

TEST(Noise, WrongPicturesFail) {
    HostPicture picture({8, 6, 3, false, VELORN_SAMPLES_U16, 0, false, 0});
    VelornNoiseReport report = emptyReport();
    const auto expect = [&](auto change, const char* message) {
        VelornPicture view = picture.view();
        change(view);
        EXPECT_VELORN_INVALID(velornNoise(&view, &report), message);
    };
    expect([](VelornPicture& p) { p.data = nullptr; }, "picture->data is null");
    expect([](VelornPicture& p) { p.width = 0; }, "picture->width is 0, but must be 1..1073741824");
    expect([](VelornPicture& p) { p.height = -3; },
           "picture->height is -3, but must be 1..1073741824");
    expect([](VelornPicture& p) { p.channels = 0; }, "picture->channels is 0, but must be 1..4");
    expect([](VelornPicture& p) { p.channels = 5; }, "picture->channels is 5, but must be 1..4");
    expect([](VelornPicture& p) { p.channels = 1, p.hasAlpha = 1; },
           "picture->channels is 1, but alpha needs a colour channel beside it");
    expect([](VelornPicture& p) { p.samples = 0; }, "picture->samples is 0, but must be 1..3");
    expect([](VelornPicture& p) { p.samples = 4; }, "picture->samples is 4, but must be 1..3");
    expect([](VelornPicture& p) { p.rowStride = 47; },
           "picture->rowStride is 47, but a row has 48 bytes");
    expect([](VelornPicture& p) { p.rowStride = -47; },
           "picture->rowStride is -47, but a row has 48 bytes");
    expect([](VelornPicture& p) { p.rowStride = PTRDIFF_MAX; },
           "picture->rowStride is 9223372036854775807, too large for 6 rows");
    expect([](VelornPicture& p) { p.rowStride = PTRDIFF_MIN; },
           "picture->rowStride is -9223372036854775808, too large for 6 rows");
}

TEST(Noise, RowStrideOfASingleRowDoesNotMatter) {
    HostPicture picture({8, 1, 1, false, VELORN_SAMPLES_U8, 0, false, 0});
    VelornPicture view = picture.view();
    view.rowStride = 0;
    VelornNoiseReport report = emptyReport();
    EXPECT_EQ(velornNoise(&view, &report), VELORN_STATUS_OK);
}

TEST(Noise, SeveralThreadsMeasureOnePictureAtOnce) {
    HostPicture picture = noisyPicture({400, 300, 3, false, VELORN_SAMPLES_U8, 0, false, 0});
    const float expected = noiseOf(picture).luminance;
    std::vector<float> measured(4);
    std::vector<std::thread> threads;
    for (float& luminance : measured) {
        threads.emplace_back([&] { luminance = noiseOf(picture).luminance; });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(measured, std::vector<float>(4, expected));
}

} // namespace
} // namespace velorntest
