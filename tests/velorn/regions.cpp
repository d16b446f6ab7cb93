#include "tests/velorn/Restoration.h"
#include "tests/velorn/Scene.h"

#include <ostream>
#include <utility>

namespace velorntest {
namespace {

struct Case {
    const char* name;
    Layout layout;
    int kernels = 1; ///< 0, 1, or one for each colour channel
    float edgeGain = 1.0f;
    float detailGain = 0.0f;
    VelornLight light = VELORN_LIGHT_AUTOMATIC;
    VelornQuality quality = VELORN_QUALITY_NORMAL;
    bool estimatesUnknown = true; ///< beyond the frame and behind clipped pixels
};

std::ostream& operator<<(std::ostream& stream, const Case& c) {
    return stream << c.name;
}

/// Wide enough for several tiles.
constexpr int kWidth = 620;
constexpr int kHeight = 300;

class Regions : public testing::TestWithParam<Case> {
protected:
    Regions() {
        const int colours = GetParam().layout.channels - (GetParam().layout.hasAlpha ? 1 : 0);
        const float radii[] = {4.0f, 3.0f, 2.0f, 5.0f};
        for (int i = 0; i < std::min(GetParam().kernels, colours); ++i) {
            m_made.push_back(madeKernel(VELORN_BLUR_DISC, radii[i]));
            kernels.push_back(m_made.back().get());
        }
        settings.edgeGain = GetParam().edgeGain;
        settings.detailGain = GetParam().detailGain;
        settings.light = GetParam().light;
        settings.quality = GetParam().quality;
        settings.continueFrame = GetParam().estimatesUnknown ? 1 : 0;
        settings.recoverClipped = settings.continueFrame;
    }

    /// The bytes that `whole` has in `region`.
    static std::vector<std::uint8_t> part(HostPicture& whole, const VelornRegion& region) {
        std::vector<std::uint8_t> bytes;
        for (int y = region.y; y < region.y + region.height; ++y) {
            const std::uint8_t* const first = whole.row(y) + region.x * whole.pixelBytes();
            bytes.insert(bytes.end(), first, first + region.width * whole.pixelBytes());
        }
        return bytes;
    }

    static constexpr VelornRegion kRegions[] = {
        {0, 0, kWidth, kHeight}, {0, 0, 1, 1},        {kWidth - 1, kHeight - 1, 1, 1},
        {331, 0, 3, kHeight},    {0, 255, kWidth, 2},
    };

    /// Draws clipped squares, some of them across the edges of regions.
    static void clipLamps(HostPicture& picture) {
        for (const auto& [left, top] : {std::pair{30, 40}, {195, 95}, {326, 180}, {500, 251}}) {
            for (int y = top; y < top + 12; ++y) {
                for (int x = left; x < left + 12; ++x) {
                    for (int c = 0; c < picture.layout().channels; ++c) {
                        picture.set(x, y, c, 1.0);
                    }
                }
            }
        }
    }

    static constexpr VelornRegion kInside{200, 100, 130, 90};

    /// The part `kInside` of a picture.
    static VelornPicture insideOf(HostPicture& picture) {
        VelornPicture inside = picture.view();
        inside.data = picture.row(kInside.y) + kInside.x * picture.pixelBytes();
        inside.width = kInside.width;
        inside.height = kInside.height;
        return inside;
    }

    Kernels kernels;
    VelornRestoreSettings settings = defaultSettings();

private:
    std::vector<HostKernel> m_made;
};

TEST_P(Regions, HaveTheBytesOfTheWhole) {
    HostPicture source =
        scenePicture(GetParam().layout, kernels.empty() ? nullptr : kernels.front());
    clipLamps(source);
    HostPicture whole = restored(source, kernels, settings);
    for (const VelornRegion& region : kRegions) {
        settings.region = region;
        Layout layout = GetParam().layout;
        layout.width = region.width;
        layout.height = region.height;
        EXPECT_EQ(restored(source, kernels, settings, layout).pixels(), part(whole, region))
            << region.x << "," << region.y << " " << region.width << "x" << region.height;
    }

    // In place: the same bytes inside of the region, no change outside.
    settings.region = kInside;
    HostPicture expected = source;
    VelornPicture inside = insideOf(source);
    const VelornPicture wholeInside = insideOf(whole);
    const VelornPicture expectedInside = insideOf(expected);
    for (int y = 0; y < kInside.height; ++y) {
        const auto rowOf = [y](const VelornPicture& picture) {
            return static_cast<std::uint8_t*>(picture.data) + y * picture.rowStride;
        };
        std::copy_n(rowOf(wholeInside), kInside.width * source.pixelBytes(), rowOf(expectedInside));
    }
    ASSERT_EQ(restore(source.view(), inside, kernels, settings), VELORN_STATUS_OK)
        << velornLastMessage();
    EXPECT_EQ(source.bytes(), expected.bytes());
}

constexpr Layout layoutOf(int channels, bool hasAlpha, VelornSamples samples) {
    return {.width = kWidth,
            .height = kHeight,
            .channels = channels,
            .hasAlpha = hasAlpha,
            .samples = samples};
}

constexpr Layout upsideDown(Layout layout) {
    layout.padding = 7;
    layout.offset = 1;
    layout.isUpsideDown = true;
    return layout;
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, Regions,
    testing::Values(
        Case{"Colours", layoutOf(3, false, VELORN_SAMPLES_U8)},
        Case{"ColoursUpsideDown", upsideDown(layoutOf(3, false, VELORN_SAMPLES_U16))},
        Case{"FloatsWithAlpha", upsideDown(layoutOf(4, true, VELORN_SAMPLES_F32))},
        Case{"Grey", layoutOf(1, false, VELORN_SAMPLES_U16)},
        Case{"GreyWithAlpha", upsideDown(layoutOf(2, true, VELORN_SAMPLES_U8))},
        Case{"TwoChannels", layoutOf(2, false, VELORN_SAMPLES_F32)},
        Case{"FourChannels", layoutOf(4, false, VELORN_SAMPLES_U8)},
        Case{"KernelForEachChannel", layoutOf(3, false, VELORN_SAMPLES_U8), 3},
        Case{"SharpenedAndDetailed", layoutOf(3, false, VELORN_SAMPLES_U8), 1, 2.0f, 1.0f},
        Case{"InLight", layoutOf(3, false, VELORN_SAMPLES_U8), 1, 1.0f, 0.0f, VELORN_LIGHT_LINEAR},
        Case{"InBestQuality", layoutOf(3, false, VELORN_SAMPLES_U8), 1, 1.0f, 0.0f,
             VELORN_LIGHT_DISPLAY, VELORN_QUALITY_BEST},
        Case{"InLightWithKernelForEachChannel", layoutOf(3, false, VELORN_SAMPLES_F32), 3, 1.0f,
             0.0f, VELORN_LIGHT_LINEAR, VELORN_QUALITY_BEST},
        Case{"InFastQualityWithoutEstimates", layoutOf(3, false, VELORN_SAMPLES_U8), 1, 1.0f, 0.0f,
             VELORN_LIGHT_AUTOMATIC, VELORN_QUALITY_FAST, false},
        Case{"WithoutKernels", layoutOf(3, false, VELORN_SAMPLES_U8), 0, 2.0f, 0.5f}),
    [](const auto& param) { return param.param.name; });

} // namespace
} // namespace velorntest
