#include "hosts/command/commands/PreviewCommand.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/pictures/DisplayPixels.h"
#include "hosts/command/pictures/ImageFile.h"
#include "tests/hosts/command/failureText.h"
#include "tests/support/BlurredPicture.h"
#include "tests/support/IccProfiles.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPictures.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using OIIO::ImageSpec;
using OIIO::TypeDesc;
using vel::test::readPicture;
using vel::test::variedSamples;
using vel::test::writeBytes;
using vel::test::writePicture;
using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;

class PreviewCommand : public ::testing::Test {
protected:
    std::string at(const std::string& name) const { return (m_folder / name).string(); }

    /// The samples of the preview of `in`, read without the code under test.
    Bytes preview(const std::string& in, float scale = 1.0f, const std::string& profile = {}) {
        velorn::PreviewOptions options{at(in), at("out.png"), scale, {}};
        if (!profile.empty()) {
            options.profile = at(profile);
        }
        m_terminal.str("");
        velorn::runPreview(options, m_interrupt, m_terminal);
        m_spec = ImageSpec();
        return readPicture<std::uint8_t>(at("out.png"), m_spec);
    }

    std::string failureOf(const std::string& in, const std::string& profile) {
        return vel::test::failureText([&] { preview(in, 1.0f, profile); });
    }

    Bytes writeColours(const std::string& name, const vel::test::ProfileBytes& profile = {},
                       int orientation = 1) {
        ImageSpec spec(31, 20, 3, TypeDesc::UINT8);
        if (!profile.empty()) {
            vel::test::attachProfile(spec, profile);
        }
        spec.attribute("Orientation", orientation);
        const auto samples = variedSamples<std::uint8_t>(spec);
        writePicture(at(name), spec, samples);
        return samples;
    }

    vel::test::TemporaryFolder m_folder;
    velorn::Interrupt m_interrupt;
    std::ostringstream m_terminal;
    ImageSpec m_spec;
};

TEST_F(PreviewCommand, PictureWithoutProfileIsUnchanged) {
    const Bytes samples = writeColours("in.png");
    EXPECT_EQ(preview("in.png"), samples);
    EXPECT_EQ(m_spec.nchannels, 3);
    EXPECT_EQ(m_spec.format, TypeDesc::UINT8);
    EXPECT_EQ(m_spec.find_attribute("ICCProfile"), nullptr);
    EXPECT_EQ(m_terminal.str(), "");
}

TEST_F(PreviewCommand, ColoursAreConvertedFromTheProfileOfThePictureToThatOfTheDisplay) {
    const auto wide = vel::test::wideGamutProfile();
    const Bytes samples = writeColours("in.tif", wide);
    EXPECT_EQ(preview("in.tif"), vel::test::transformed(wide, {}, TYPE_RGB_8, samples));
    EXPECT_EQ(m_spec.find_attribute("ICCProfile"), nullptr);

    const Bytes plain = writeColours("plain.png");
    writeBytes(at("display.icc"), wide);
    EXPECT_EQ(preview("plain.png", 1.0f, "display.icc"),
              vel::test::transformed({}, wide, TYPE_RGB_8, plain));
    EXPECT_EQ(velorn::ImageFile::read(at("out.png")).profile(), wide);
    EXPECT_EQ(m_terminal.str(), "");
}

TEST_F(PreviewCommand, ScaledPictureEqualsTheResultOfTheDisplayExports) {
    const Bytes samples = writeColours("in.png");
    const Bytes shown = preview("in.png", 1.5f);
    const auto expected = velorn::displayPixels({31, 20, samples}, {}, 1.5f);
    EXPECT_EQ(m_spec.width, 46);
    EXPECT_EQ(m_spec.height, 30);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        ASSERT_EQ(shown[i], expected.bytes[i / 3 * 4 + 2 - i % 3]);
    }
}

TEST_F(PreviewCommand, SixteenBitsAreConvertedOnTheFifteenBitScale) {
    ImageSpec spec(4, 1, 3, TypeDesc::UINT16);
    // 255 is the lowest value that becomes level 1.
    writePicture(at("in.tif"), spec,
                 Words{0, 254, 255, 257, 32767, 32768, 65279, 65535, 65535, 128, 300, 511});
    EXPECT_EQ(preview("in.tif"), (Bytes{0, 0, 1, 1, 128, 128, 255, 255, 255, 0, 1, 2}));
}

TEST_F(PreviewCommand, GreyIsShownAsEqualColoursWithoutItsProfile) {
    ImageSpec spec(9, 6, 1, TypeDesc::UINT8);
    vel::test::attachProfile(spec, vel::test::greyProfile());
    const auto samples = variedSamples<std::uint8_t>(spec);
    writePicture(at("in.png"), spec, samples);
    const Bytes shown = preview("in.png");
    ASSERT_EQ(shown.size(), 3 * samples.size());
    for (std::size_t i = 0; i < shown.size(); ++i) {
        ASSERT_EQ(shown[i], samples[i / 3]);
    }
    EXPECT_EQ(m_terminal.str(), "");
}

TEST_F(PreviewCommand, AlphaIsOmitted) {
    ImageSpec spec(9, 6, 4, TypeDesc::UINT8);
    spec.alpha_channel = 3;
    const auto samples = variedSamples<std::uint8_t>(spec);
    writePicture(at("in.png"), spec, samples);
    const Bytes shown = preview("in.png");
    ASSERT_EQ(m_spec.nchannels, 3);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        ASSERT_EQ(shown[i], samples[i / 3 * 4 + i % 3]);
    }
}

TEST_F(PreviewCommand, TurnedPictureIsShownUpright) {
    const Bytes samples = writeColours("in.tif", {}, 6);
    const Bytes shown = preview("in.tif");
    ASSERT_EQ(m_spec.width, 20);
    ASSERT_EQ(m_spec.height, 31);
    EXPECT_EQ(m_spec.get_int_attribute("Orientation", 1), 1);
    // The first displayed row is the first stored column, from bottom to top.
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_EQ(shown[c], samples[31 * 19 * 3 + c]);
        EXPECT_EQ(shown[19 * 3 + c], samples[c]);
    }
}

TEST_F(PreviewCommand, UnusableProfileOfThePictureIsAWarning) {
    const Bytes samples = writeColours("in.tif", vel::test::minimalProfile());
    EXPECT_EQ(preview("in.tif"), samples);
    EXPECT_EQ(m_terminal.str(), "velorn: warning: " + velorn::quoted(at("in.tif")) +
                                    ": its colour profile cannot be used; assuming sRGB\n");
}

TEST_F(PreviewCommand, UnusableProfileOfTheDisplayIsAFailureThatNamesIt) {
    writeColours("in.png");
    writeBytes(at("garbage.icc"), vel::test::garbageProfile());
    writeBytes(at("grey.icc"), vel::test::greyProfile());
    writeBytes(at("empty.icc"), {});
    for (const std::string name : {"garbage.icc", "grey.icc", "empty.icc"}) {
        EXPECT_EQ(failureOf("in.png", name),
                  velorn::quoted(at(name)) + ": not an ICC profile of an RGB display");
    }
    EXPECT_NE(failureOf("in.png", "none.icc").find(at("none.icc")), std::string::npos);
    EXPECT_NE(failureOf("in.png", "."), "");
    EXPECT_EQ(m_folder.fileCount(), 4u);
}

} // namespace
