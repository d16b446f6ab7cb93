#include "restoration/pictures/PictureBuffer.h"
#include "restoration/pictures/PictureReader.h"
#include "restoration/pictures/PictureWriter.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace restoration {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

template <class Sample>
VelornPicture pictureOf(std::vector<Sample>& samples, int width, int height, int channels) {
    const int type = sizeof(Sample) == 1   ? VELORN_SAMPLES_U8
                     : sizeof(Sample) == 2 ? VELORN_SAMPLES_U16
                                           : VELORN_SAMPLES_F32;
    const std::size_t stride =
        sizeof(Sample) * static_cast<std::size_t>(channels) * static_cast<std::size_t>(width);
    return {samples.data(), static_cast<std::ptrdiff_t>(stride), width, height, channels, 0, type};
}

template <class Sample>
std::vector<float> readAll(std::vector<Sample> samples) {
    const int count = static_cast<int>(samples.size());
    std::vector<float> values(samples.size());
    PictureReader(pictureOf(samples, count, 1, 1)).readChannel(0, 0, 0, count, values.data());
    return values;
}

template <class Sample>
std::vector<Sample> writeAll(const std::vector<float>& values) {
    const int count = static_cast<int>(values.size());
    std::vector<Sample> samples(values.size());
    PictureWriter(pictureOf(samples, count, 1, 1)).writeChannel(0, 0, 0, count, values.data());
    return samples;
}

TEST(PictureReader, WhiteIsOne) {
    EXPECT_EQ(readAll<std::uint8_t>({0, 51, 255}), (std::vector<float>{0.0f, 0.2f, 1.0f}));
    EXPECT_EQ(readAll<std::uint16_t>({0, 13107, 65535}), (std::vector<float>{0.0f, 0.2f, 1.0f}));
    EXPECT_EQ(readAll<float>({-1.0f, 0.2f, 7.0f}), (std::vector<float>{-1.0f, 0.2f, 7.0f}));
}

TEST(PictureReader, FloatsThatAreNotFiniteAreZero) {
    EXPECT_EQ(readAll<float>({kNan, kInfinity, -kInfinity, 0.5f}),
              (std::vector<float>{0.0f, 0.0f, 0.0f, 0.5f}));
}

TEST(PictureWriter, IntegersAreRoundedToNearestAndClamped) {
    EXPECT_EQ(writeAll<std::uint8_t>({-3.0f, 0.4f / 255, 0.6f / 255, 1.0f, 2.0f, kInfinity, kNan}),
              (std::vector<std::uint8_t>{0, 0, 1, 255, 255, 255, 0}));
    EXPECT_EQ(writeAll<std::uint16_t>({-kInfinity, 0.4f / 65535, 0.6f / 65535, 1.0f, 9e37f}),
              (std::vector<std::uint16_t>{0, 0, 1, 65535, 65535}));
}

TEST(PictureWriter, FloatsStayAsTheyAre) {
    const std::vector<float> values{-3.0f, 0.1f, 1e30f};
    EXPECT_EQ(writeAll<float>(values), values);
}

template <class Sample>
void expectExactReturn() {
    std::vector<Sample> all(std::size_t{std::numeric_limits<Sample>::max()} + 1);
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = static_cast<Sample>(i);
    }
    EXPECT_EQ(writeAll<Sample>(readAll(all)), all);
}

TEST(PictureWriter, EveryIntegerReturnsAsItWas) {
    expectExactReturn<std::uint8_t>();
    expectExactReturn<std::uint16_t>();
}

// Every byte of the memory is known, so a write outside the pixels shows.
template <class Sample>
void expectStridesAndAlignment(int channels, bool isUpsideDown) {
    constexpr int kWidth = 7;
    constexpr int kHeight = 5;
    const std::size_t rowBytes =
        sizeof(Sample) * static_cast<std::size_t>(channels) * kWidth + 3; // odd strides
    std::vector<unsigned char> memory(rowBytes * kHeight + 1, 0xA5);
    const auto stride = static_cast<std::ptrdiff_t>(rowBytes);
    VelornPicture picture{memory.data() + 1,
                          stride,
                          kWidth,
                          kHeight,
                          channels,
                          0,
                          sizeof(Sample) == 1   ? VELORN_SAMPLES_U8
                          : sizeof(Sample) == 2 ? VELORN_SAMPLES_U16
                                                : VELORN_SAMPLES_F32};
    if (isUpsideDown) {
        picture.data = memory.data() + 1 + stride * (kHeight - 1);
        picture.rowStride = -stride;
    }
    const auto value = [](int c, int y, int x) {
        return static_cast<float>(c * 50 + y * 8 + x) / 255.0f;
    };
    std::array<std::vector<float>, 4> rows;
    rows.fill(std::vector<float>(kWidth));
    for (int y = 0; y < kHeight; ++y) {
        std::vector<const float*> sources;
        for (int c = 0; c < channels; ++c) {
            std::vector<float>& row = rows[static_cast<std::size_t>(c)];
            for (int x = 0; x < kWidth; ++x) {
                row[static_cast<std::size_t>(x)] = value(c, y, x);
            }
            sources.push_back(row.data());
        }
        PictureWriter(picture).writeRow(y, 0, kWidth, sources);
    }
    std::vector<float> part(3);
    for (int c = 0; c < channels; ++c) {
        PictureReader(picture).readChannel(c, 4, 2, 3, part.data());
        for (int x = 0; x < 3; ++x) {
            EXPECT_NEAR(part[static_cast<std::size_t>(x)], value(c, 4, 2 + x), 1e-5f);
        }
    }
    EXPECT_EQ(memory[0], 0xA5);
    for (int y = 0; y < kHeight; ++y) {
        for (std::size_t pad = rowBytes - 3; pad < rowBytes; ++pad) {
            EXPECT_EQ(memory[1 + static_cast<std::size_t>(y) * rowBytes + pad], 0xA5);
        }
    }
}

TEST(Pictures, AnyAlignmentAndStrideIsReadAndWritten) {
    for (int channels = 1; channels <= 4; ++channels) {
        for (const bool isUpsideDown : {false, true}) {
            expectStridesAndAlignment<std::uint8_t>(channels, isUpsideDown);
            expectStridesAndAlignment<std::uint16_t>(channels, isUpsideDown);
            expectStridesAndAlignment<float>(channels, isUpsideDown);
        }
    }
}

TEST(PictureWriter, ChannelsWithoutASourceStay) {
    std::vector<std::uint8_t> samples(8, 9);
    const std::vector<float> grey{0.0f, 1.0f};
    const float* source = grey.data();
    PictureWriter(pictureOf(samples, 2, 2, 2)).writeRow(1, 0, 2, {&source, 1});
    EXPECT_EQ(samples, (std::vector<std::uint8_t>{9, 9, 9, 9, 0, 9, 255, 9}));
}

TEST(PictureBuffer, HasTheFormatAndIsCopiedRowByRow) {
    std::vector<std::uint16_t> samples(12, 7);
    VelornPicture target = pictureOf(samples, 2, 2, 3);
    target.data = samples.data() + 6;
    target.rowStride = -target.rowStride;
    PictureBuffer buffer(target);
    const std::vector<float> row{1.0f, 0.0f};
    PictureWriter(buffer.picture()).writeChannel(1, 1, 0, 2, row.data());
    buffer.copyTo(target);
    EXPECT_EQ(samples, (std::vector<std::uint16_t>{0, 65535, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

} // namespace
} // namespace restoration
