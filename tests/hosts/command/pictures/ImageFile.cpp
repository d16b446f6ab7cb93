#include "hosts/command/pictures/ImageFile.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/pictures/PixelScale.h"
#include "tests/hosts/command/failureText.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPictures.h"

#include <gtest/gtest.h>

namespace {

using OIIO::ImageSpec;
using OIIO::TypeDesc;
using vel::test::attachProfile;
using vel::test::minimalProfile;
using vel::test::readPicture;
using vel::test::TemporaryFolder;
using vel::test::variedSamples;
using vel::test::writeBytes;
using vel::test::writePicture;
using vel::test::writeText;
using velorn::Failure;
using velorn::ImageFile;

std::string failureOf(const std::filesystem::path& path) {
    return vel::test::failureText([&] { ImageFile::read(path); });
}

ImageSpec specOf(int channels, TypeDesc type) {
    ImageSpec spec(23, 17, channels, type);
    if (channels == 2 || channels == 4) {
        spec.alpha_channel = channels - 1;
        spec.channelnames.back() = "A";
    }
    return spec;
}

/// Reads a picture, writes it under another name and expects the same samples.
template <class T>
void expectSamplesToBeKept(const std::string& from, const std::string& to, int channels) {
    SCOPED_TRACE(from + " to " + to + ", " + std::to_string(channels) + " channels");
    const TemporaryFolder folder;
    const ImageSpec spec = specOf(channels, OIIO::BaseTypeFromC<T>::value);
    const auto samples = variedSamples<T>(spec);
    writePicture(folder / from, spec, samples);
    ImageFile picture = ImageFile::read(folder / from);
    ASSERT_EQ(std::get<std::vector<T>>(picture.samples()), samples);
    writeBytes(folder / to, picture.encode(folder / to));
    ImageSpec back;
    EXPECT_EQ(readPicture<T>(folder / to, back), samples);
    EXPECT_EQ(back.nchannels, channels);
    EXPECT_EQ(back.format, spec.format);
}

TEST(ImageFile, LosslessFormatsKeepEverySampleAndTheDepth) {
    for (const int channels : {1, 2, 3, 4}) {
        for (const char* name : {"b.png", "b.tif"}) {
            expectSamplesToBeKept<std::uint8_t>("a.png", name, channels);
            expectSamplesToBeKept<std::uint16_t>("a.png", name, channels);
            expectSamplesToBeKept<std::uint8_t>("a.tif", name, channels);
            expectSamplesToBeKept<std::uint16_t>("a.tif", name, channels);
        }
    }
    expectSamplesToBeKept<std::uint8_t>("a.png", "b.tga", 4);
}

TEST(ImageFile, DevicesAreRefused) {
    EXPECT_THROW(ImageFile::read("/dev/zero"), Failure);
}

TEST(ImageFile, AlphaIsKeptInEveryFormatThatSupportsIt) {
    const TemporaryFolder folder;
    const ImageSpec spec = specOf(4, TypeDesc::UINT8);
    const auto samples = variedSamples<std::uint8_t>(spec);
    writePicture(folder / "a.png", spec, samples);
    ImageFile picture = ImageFile::read(folder / "a.png");
    auto colours = picture.rgb();
    for (auto& sample : std::get<std::vector<std::uint8_t>>(colours.samples)) {
        sample = static_cast<std::uint8_t>(255 - sample);
    }
    picture.setRgb(colours);
    for (const char* name : {"b.png", "b.tif", "b.webp", "b.tga"}) {
        writeBytes(folder / name, picture.encode(folder / name));
        ImageSpec back;
        const auto written = readPicture<std::uint8_t>(folder / name, back);
        ASSERT_EQ(written.size(), samples.size()) << name;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            ASSERT_TRUE(i % 4 != 3 || written[i] == samples[i]) << name;
        }
    }
}

TEST(ImageFile, ColoursOfTransparentPixelsAreKept) {
    expectSamplesToBeKept<std::uint8_t>("a.png", "b.tif", 4);
    const TemporaryFolder folder;
    const ImageSpec spec = specOf(4, TypeDesc::UINT8);
    auto samples = variedSamples<std::uint8_t>(spec);
    for (std::size_t i = 3; i < samples.size(); i += 4) {
        samples[i] = 0;
    }
    writePicture(folder / "a.png", spec, samples);
    EXPECT_EQ(std::get<std::vector<std::uint8_t>>(ImageFile::read(folder / "a.png").samples()),
              samples);
}

TEST(ImageFile, GreyBecomesThreeEqualChannelsAndGreyAgain) {
    const TemporaryFolder folder;
    const ImageSpec spec = specOf(2, TypeDesc::UINT16);
    const auto samples = variedSamples<std::uint16_t>(spec);
    writePicture(folder / "a.png", spec, samples);
    ImageFile picture = ImageFile::read(folder / "a.png");
    auto rgb = picture.rgb();
    auto& colours = std::get<std::vector<std::uint16_t>>(rgb.samples);
    ASSERT_EQ(colours.size(), samples.size() / 2 * 3);
    for (std::size_t i = 0; i < samples.size() / 2; ++i) {
        for (std::size_t c = 0; c < 3; ++c) {
            ASSERT_EQ(colours[3 * i + c], velorn::toFifteenBits(samples[2 * i]));
        }
    }
    colours[0] = 99;
    colours[1] = 100;
    colours[2] = 101;
    picture.setRgb(rgb);
    const auto& back = std::get<std::vector<std::uint16_t>>(picture.samples());
    EXPECT_EQ(back[0], velorn::fromFifteenBits(100));
    EXPECT_EQ(back[1], samples[1]);
    for (std::size_t i = 2; i < back.size(); i += 2) {
        ASSERT_NEAR(back[i], samples[i], 1);
        ASSERT_EQ(back[i + 1], samples[i + 1]);
    }
}

TEST(ImageFile, FloatingPointInRangeIsRoundedToSixteenBits) {
    const TemporaryFolder folder;
    const ImageSpec spec(3, 1, 1, TypeDesc::FLOAT);
    writePicture(folder / "a.tif", spec, std::vector<float>{0.0f, 0.5f, 1.0f});
    const ImageFile picture = ImageFile::read(folder / "a.tif");
    EXPECT_EQ(std::get<std::vector<std::uint16_t>>(picture.samples()),
              (std::vector<std::uint16_t>{0, 32768, 65535}));
}

TEST(ImageFile, FloatingPointOutOfRangeIsRefused) {
    const TemporaryFolder folder;
    const ImageSpec spec(3, 1, 1, TypeDesc::FLOAT);
    for (const float bad : {1.5f, -0.1f, std::numeric_limits<float>::quiet_NaN()}) {
        writePicture(folder / "a.tif", spec, std::vector<float>{0.0f, bad, 1.0f});
        EXPECT_NE(failureOf(folder / "a.tif").find("outside 0..1"), std::string::npos);
    }
}

TEST(ImageFile, ThirtyTwoBitIntegersBecomeSixteenBits) {
    const TemporaryFolder folder;
    const ImageSpec spec(2, 1, 1, TypeDesc::UINT32);
    writePicture(folder / "a.tif", spec, std::vector<std::uint32_t>{0, 0xFFFFFFFFu});
    EXPECT_EQ(std::get<std::vector<std::uint16_t>>(ImageFile::read(folder / "a.tif").samples()),
              (std::vector<std::uint16_t>{0, 65535}));
}

TEST(ImageFile, SixteenBitsBecomeEightInFormatsThatHaveOnlyEight) {
    const TemporaryFolder folder;
    ImageFile picture(4, 4, 3, 16);
    std::ranges::fill(std::get<std::vector<std::uint16_t>>(picture.samples()),
                      static_cast<std::uint16_t>(257 * 200));
    writeBytes(folder / "a.webp", picture.encode("a.webp"));
    ImageSpec spec;
    EXPECT_EQ(readPicture<std::uint8_t>(folder / "a.webp", spec),
              std::vector<std::uint8_t>(48, 200));
}

/// Writes a picture with the metadata of a camera and a profile; the extension selects the format.
void writeCameraPicture(const std::filesystem::path& path) {
    ImageSpec spec(24, 16, 3, TypeDesc::UINT8);
    spec.attribute("Make", "A maker");
    spec.attribute("Exif:LensModel", "Fifty");
    spec.attribute("Orientation", 6);
    spec.attribute("ImageDescription", "a caption");
    spec.attribute("Copyright", "me");
    attachProfile(spec, minimalProfile());
    const TemporaryFolder folder;
    // Only the encoders of JPEG and TIFF accept named attributes.
    writePicture(folder / "a.tif", spec, variedSamples<std::uint8_t>(spec));
    writeBytes(path, ImageFile::read(folder / "a.tif").encode(path));
}

TEST(ImageFile, ProfileAndExifAreKeptBetweenAllFormatsThatSupportThem) {
    const TemporaryFolder folder;
    for (const std::string from : {"jpg", "png", "tif", "webp"}) {
        for (const std::string to : {"jpg", "png", "tif", "webp"}) {
            SCOPED_TRACE(from + " to " + to);
            writeCameraPicture(folder / ("a." + from));
            const auto bytes = ImageFile::read(folder / ("a." + from)).encode("b." + to);
            writeBytes(folder / ("b." + to), bytes);
            const ImageFile back = ImageFile::read(folder / ("b." + to));
            EXPECT_EQ(back.orientation(), 6);
            // The reader of TIFF files has names for all of the metadata.
            writeBytes(folder / "c.tif", back.encode("c.tif"));
            ImageSpec spec;
            readPicture<std::uint8_t>(folder / "c.tif", spec);
            EXPECT_EQ(spec.get_string_attribute("Make"), "A maker");
            EXPECT_EQ(spec.get_string_attribute("Exif:LensModel"), "Fifty");
            EXPECT_EQ(spec.get_string_attribute("Copyright"), "me");
            const auto* profile = spec.find_attribute("ICCProfile");
            ASSERT_NE(profile, nullptr);
            const auto* data = static_cast<const unsigned char*>(profile->data());
            EXPECT_EQ(std::vector<unsigned char>(data, data + profile->type().size()),
                      minimalProfile());
        }
    }
}

TEST(ImageFile, DepthBelowEightBitsBecomesEight) {
    const TemporaryFolder folder;
    ImageSpec spec(8, 8, 1, TypeDesc::UINT8);
    spec.attribute("oiio:BitsPerSample", 1);
    writePicture(folder / "a.tif", spec, std::vector<std::uint8_t>(64, 255));
    ImageFile picture = ImageFile::read(folder / "a.tif");
    std::ranges::fill(std::get<std::vector<std::uint8_t>>(picture.samples()), std::uint8_t{100});
    writeBytes(folder / "b.tif", picture.encode("b.tif"));
    ImageSpec back;
    EXPECT_EQ(readPicture<std::uint8_t>(folder / "b.tif", back),
              std::vector<std::uint8_t>(64, 100));
}

TEST(ImageFile, DescriptionIsStoredWithThePicture) {
    const TemporaryFolder folder;
    ImageFile picture(2, 2, 1, 8);
    EXPECT_EQ(picture.description(), "");
    EXPECT_EQ(picture.orientation(), 1);
    picture.setDescription("a caption");
    for (const char* name : {"a.png", "a.tif", "a.jpg"}) {
        writeBytes(folder / name, picture.encode(name));
        EXPECT_EQ(ImageFile::read(folder / name).description(), "a caption") << name;
    }
}

TEST(ImageFile, UnreadableFilesAreFailuresThatNameTheFile) {
    const TemporaryFolder folder;
    EXPECT_EQ(failureOf(folder / "none.png"),
              "cannot read " + velorn::quoted(folder / "none.png") + ": No such file or directory");
    EXPECT_EQ(failureOf(folder / ""),
              "cannot read " + velorn::quoted(folder / "") + ": it is a folder");
    for (const char* name : {"a.png", "a.jpg", "a.tif", "a.webp", "a.xyz", "a"}) {
        for (const std::string content : {"", "not a picture at all, but long enough to be one"}) {
            writeText(folder / name, content);
            const std::string text = failureOf(folder / name);
            EXPECT_EQ(text.rfind("cannot read " + velorn::quoted(folder / name) + ": ", 0), 0u)
                << text;
            EXPECT_EQ(text.find('\n'), std::string::npos) << text;
        }
    }
}

TEST(ImageFile, TruncatedPicturesAreRefused) {
    const TemporaryFolder folder;
    ImageFile picture(120, 60, 3, 8);
    std::uint32_t state = 1;
    for (auto& sample : std::get<std::vector<std::uint8_t>>(picture.samples())) {
        state = state * 1664525u + 1013904223u;
        sample = static_cast<std::uint8_t>(state >> 24);
    }
    for (const char* name : {"a.png", "a.tif", "a.jpg"}) {
        auto bytes = picture.encode(name);
        bytes.resize(bytes.size() / 2);
        writeBytes(folder / name, bytes);
        EXPECT_NE(failureOf(folder / name), "") << name;
    }
}

TEST(ImageFile, ChannelsOtherThanGreyAndRgbAreRefused) {
    const TemporaryFolder folder;
    ImageSpec spec(8, 8, 5, TypeDesc::UINT8);
    writePicture(folder / "a.tif", spec, variedSamples<std::uint8_t>(spec));
    EXPECT_NE(failureOf(folder / "a.tif").find("has 5 channels"), std::string::npos);
    ImageSpec two(8, 8, 2, TypeDesc::UINT8);
    two.channelnames = {"X", "Y"};
    writePicture(folder / "b.tif", two, variedSamples<std::uint8_t>(two));
    EXPECT_NE(failureOf(folder / "b.tif").find("has 2 channels"), std::string::npos);
}

TEST(ImageFile, SeveralPicturesInAFileAreRefused) {
    const TemporaryFolder folder;
    const ImageSpec spec(8, 8, 3, TypeDesc::UINT8);
    const auto samples = variedSamples<std::uint8_t>(spec);
    const std::string path = (folder / "a.tif").string();
    const auto output = OIIO::ImageOutput::create(path);
    ASSERT_TRUE(output->open(path, spec));
    ASSERT_TRUE(output->write_image(TypeDesc::UINT8, samples.data()));
    ASSERT_TRUE(output->open(path, spec, OIIO::ImageOutput::AppendSubimage));
    ASSERT_TRUE(output->write_image(TypeDesc::UINT8, samples.data()));
    ASSERT_TRUE(output->close());
    EXPECT_NE(failureOf(folder / "a.tif").find("more than one picture"), std::string::npos);
}

TEST(ImageFile, UnknownFormatsCannotBeWritten) {
    for (const char* name : {"a.xyz", "a", "a.txt", ".png"}) {
        EXPECT_THROW(ImageFile::checkWritable(name), Failure) << name;
        EXPECT_THROW(ImageFile(2, 2, 3, 8).encode(name), Failure) << name;
    }
    EXPECT_NO_THROW(ImageFile::checkWritable("a.png"));
    EXPECT_NO_THROW(ImageFile::checkWritable("A.JPG"));
}

} // namespace
