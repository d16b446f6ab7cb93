#include "hosts/command/pictures/ImageFile.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPictures.h"

#include <gtest/gtest.h>

namespace {

using vel::test::ProgramResult;
using vel::test::TemporaryFolder;
using vel::test::variedSamples;
using vel::test::writePicture;
using velorn::ImageFile;

class OmittedMetadata : public testing::Test {
protected:
    std::string at(const std::string& name) const { return (m_folder / name).string(); }

    /// Writes a TIFF file with a description of `length` characters.
    void writeDescribed(const std::string& name, std::size_t length) {
        OIIO::ImageSpec spec(24, 16, 3, OIIO::TypeDesc::UINT8);
        spec.attribute("ImageDescription", std::string(length, 'x'));
        spec.attribute("Copyright", "somebody");
        writePicture(at(name), spec, variedSamples<std::uint8_t>(spec));
    }

    ProgramResult deblur(const std::string& from, const std::string& to) const {
        return vel::test::runProgram({VELORN_PROGRAM, "deblur", at(from), at(to), "--disc", "1"});
    }

    static std::string warning(const std::string& path, const std::string& names) {
        return "velorn: warning: '" + path + "' has no room for " + names + "\n";
    }

private:
    TemporaryFolder m_folder;
};

TEST_F(OmittedMetadata, DescriptionAboveTheLimitOfAFormatIsNamed) {
    for (const std::size_t length : {70000u, 84000u}) {
        writeDescribed("a.tif", length);
        for (const std::string name : {"b.jpg", "b.webp"}) {
            const ProgramResult result = deblur("a.tif", name);
            EXPECT_EQ(result.exitStatus, 0) << name;
            EXPECT_EQ(result.errors, warning(at(name), "EXIF ImageDescription"));
            EXPECT_EQ(ImageFile::read(at(name)).description(), "");
        }
        for (const std::string name : {"b.png", "b.tif"}) {
            const ProgramResult result = deblur("a.tif", name);
            EXPECT_EQ(result.exitStatus, 0) << name;
            EXPECT_EQ(result.errors, "") << name;
            EXPECT_EQ(ImageFile::read(at(name)).description().size(), length) << name;
        }
    }
}

TEST_F(OmittedMetadata, CaptionOfAPngFileAboveTheLimitIsNamed) {
    OIIO::ImageSpec spec(24, 16, 3, OIIO::TypeDesc::UINT8);
    spec.attribute("ImageDescription", std::string(70000, 'x'));
    spec.attribute("Artist", "somebody");
    writePicture(at("a.png"), spec, variedSamples<std::uint8_t>(spec));
    const ProgramResult result = deblur("a.png", "b.jpg");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.errors, warning(at("b.jpg"), "the comment, the text Artist"));
    EXPECT_EQ(deblur("a.png", "b.png").errors, "");
    EXPECT_EQ(ImageFile::read(at("b.png")).description().size(), 70000u);
    OIIO::ImageSpec back;
    vel::test::readPicture<std::uint8_t>(at("b.png"), back);
    EXPECT_EQ(back.get_string_attribute("Artist"), "somebody");
}

TEST_F(OmittedMetadata, FormatsWithoutMetadataAreNamedInOneLine) {
    writeDescribed("a.tif", 10);
    const ProgramResult result = deblur("a.tif", "b.bmp");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.errors, warning(at("b.bmp"), "EXIF"));
}

TEST_F(OmittedMetadata, NothingIsPrintedWhereNothingIsMissing) {
    writeDescribed("a.tif", 10);
    for (const std::string name : {"b.jpg", "b.png", "b.tif", "b.webp"}) {
        EXPECT_EQ(deblur("a.tif", name).errors, "") << name;
    }
}

} // namespace
