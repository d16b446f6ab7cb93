#include "hosts/command/codecs/encodePixels.h"

#include "hosts/command/pictures/codecThreads.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPictures.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string_view>

namespace {

using velorn::EncoderSettings;
using velorn::Format;
using velorn::Pixels;

/// A slope with noise.
Pixels noisyPixels(int width, int height, int channels, int bits) {
    Pixels pixels = velorn::blackPixels({width, height, channels, bits});
    std::visit(
        [&]<class T>(std::vector<T>& samples) {
            std::uint32_t state = 1;
            for (std::size_t i = 0; i < samples.size(); ++i) {
                state = state * 1664525u + 1013904223u;
                samples[i] =
                    static_cast<T>((sizeof(T) == 1 ? 1u : 257u) * (i / 200 % 200) + (state >> 28));
            }
        },
        pixels.samples);
    return pixels;
}

std::vector<unsigned char> encoded(const Pixels& pixels, const std::string& extension,
                                   const EncoderSettings& settings = {}) {
    return velorn::encodePixels(pixels, velorn::outputFormatNamed(extension), settings, {});
}

TEST(EncodePixels, BytesDoNotDependOnTheNumberOfThreads) {
    for (const Format& format : velorn::kFormats) {
        if (!format.isWritten) {
            continue;
        }
        for (const int bits : {8, 16}) {
            const auto shape = velorn::heldShape(format, {96, 72, 3, bits});
            const Pixels pixels = noisyPixels(96, 72, 3, shape.bits);
            velorn::setCodecThreads(1);
            const auto one = encoded(pixels, std::string(format.extensions[0]));
            velorn::setCodecThreads(4);
            EXPECT_EQ(encoded(pixels, std::string(format.extensions[0])), one) << format.name;
        }
    }
    velorn::setCodecThreads(1);
}

TEST(EncodePixels, PngAndTiffKeepEverySample) {
    const vel::test::TemporaryFolder folder;
    for (const std::string name : {"a.png", "a.tif"}) {
        for (const int channels : {1, 2, 3, 4}) {
            const auto expectKept = [&]<class T>(const std::vector<T>& samples, const Pixels& all) {
                vel::test::writeBytes(folder / name, encoded(all, name.substr(2)));
                OIIO::ImageSpec spec;
                EXPECT_EQ(vel::test::readPicture<T>(folder / name, spec), samples) << name;
                EXPECT_EQ(spec.format, OIIO::TypeDesc(OIIO::BaseTypeFromC<T>::value));
            };
            for (const int bits : {8, 16}) {
                const Pixels pixels = noisyPixels(37, 23, channels, bits);
                std::visit([&](const auto& samples) { expectKept(samples, pixels); },
                           pixels.samples);
            }
        }
    }
}

/// The effort that the header of the first compressed data in a PNG file states, 0 for the fastest
/// of 0..3 (RFC 1950, FLEVEL).
int statedEffort(const std::vector<unsigned char>& png) {
    const std::string name = "IDAT";
    const auto data = std::search(png.begin(), png.end(), name.begin(), name.end());
    return data + 5 < png.end() ? data[5] >> 6 : -1;
}

TEST(EncodePixels, NoDateIsInvented) {
    const auto bytes = encoded(noisyPixels(8, 8, 3, 16), "exr");
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    // The name of the attribute and of its type, and its length.
    const std::string_view empty("capDate\0string\0\0\0\0\0", 19);
    EXPECT_TRUE(text.find("capDate") == std::string_view::npos ||
                text.find(empty) != std::string_view::npos);
}

TEST(EncodePixels, CompressionTakesTheLeastEffort) {
    const vel::test::TemporaryFolder folder;
    for (const int bits : {8, 16}) {
        const Pixels pixels = noisyPixels(96, 72, 3, bits);
        EXPECT_EQ(statedEffort(encoded(pixels, "png")), 0);
        vel::test::writeBytes(folder / "a.tif", encoded(pixels, "tif"));
        OIIO::ImageSpec spec;
        vel::test::readPicture<std::uint8_t>(folder / "a.tif", spec);
        EXPECT_EQ(spec.get_string_attribute("compression"), "zip");
        EXPECT_EQ(spec.get_int_attribute("tiff:RowsPerStrip"), 1);
    }
}

TEST(EncodePixels, LzwIsInheritedWithEightBits) {
    const vel::test::TemporaryFolder folder;
    EncoderSettings settings;
    settings.tiffCompression = "lzw";
    for (const int bits : {8, 16}) {
        vel::test::writeBytes(folder / "a.tif",
                              encoded(noisyPixels(96, 72, 3, bits), "tif", settings));
        OIIO::ImageSpec spec;
        vel::test::readPicture<std::uint8_t>(folder / "a.tif", spec);
        EXPECT_EQ(spec.get_string_attribute("compression"), bits == 8 ? "lzw" : "zip");
    }
}

} // namespace
