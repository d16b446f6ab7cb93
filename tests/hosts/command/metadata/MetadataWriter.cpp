#include "hosts/command/metadata/MetadataWriter.h"

#include "hosts/command/pictures/ImageFile.h"
#include "tests/support/TestPictures.h"

#include <gtest/gtest.h>

namespace {

using vel::test::minimalProfile;
using velorn::ImageFile;
using velorn::MetadataWriter;
using velorn::PictureMetadata;
using velorn::WrittenMetadata;

const std::vector<std::string> kFormats{"jpg", "png", "tif", "webp"};

std::vector<unsigned char> bareFile(const std::string& extension) {
    return ImageFile(9, 7, 3, 8).encode("a." + extension);
}

TEST(MetadataWriter, WritesWhatIsReadBack) {
    PictureMetadata metadata;
    metadata.setOrientation(6);
    metadata.setDescription("a caption");
    metadata.setProfile(minimalProfile());
    for (const std::string& format : kFormats) {
        SCOPED_TRACE(format);
        ImageFile picture(9, 7, 3, 8);
        picture.setProfile(minimalProfile()); // in PNG files, the encoder writes it
        const WrittenMetadata written =
            MetadataWriter(metadata).writeInto(picture.encode("a." + format), {});
        EXPECT_EQ(written.omitted, std::vector<std::string>());
        const PictureMetadata back = PictureMetadata::read(written.file);
        EXPECT_EQ(back.orientation(), 6);
        EXPECT_EQ(back.description(), "a caption");
        EXPECT_EQ(back.profile(), minimalProfile());
        EXPECT_FALSE(back.hadThumbnail());
    }
}

TEST(MetadataWriter, ReplacesEverythingThatTheFileHad) {
    PictureMetadata former;
    former.setOrientation(3);
    former.setDescription("former");
    for (const std::string& format : kFormats) {
        const auto file = MetadataWriter(former).writeInto(bareFile(format), {}).file;
        ASSERT_EQ(PictureMetadata::read(file).orientation(), 3) << format;
        const auto bare = MetadataWriter(PictureMetadata()).writeInto(file, {}).file;
        EXPECT_EQ(PictureMetadata::read(bare).orientation(), 1) << format;
        EXPECT_EQ(PictureMetadata::read(bare).description(), "") << format;
    }
}

TEST(MetadataWriter, NamesWhatAFormatCannotHold) {
    PictureMetadata metadata;
    metadata.setDescription(std::string(84000, 'x'));
    metadata.setOrientation(8);
    for (const std::string format : {"jpg", "webp"}) {
        const WrittenMetadata written = MetadataWriter(metadata).writeInto(bareFile(format), {});
        EXPECT_EQ(written.omitted, std::vector<std::string>{"EXIF ImageDescription"}) << format;
        EXPECT_EQ(PictureMetadata::read(written.file).orientation(), 8) << format;
    }
    for (const std::string format : {"png", "tif"}) {
        const WrittenMetadata written = MetadataWriter(metadata).writeInto(bareFile(format), {});
        EXPECT_EQ(written.omitted, std::vector<std::string>()) << format;
        EXPECT_EQ(PictureMetadata::read(written.file).description().size(), 84000u) << format;
    }
    const std::vector<unsigned char> bitmap{'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const WrittenMetadata unchanged = MetadataWriter(metadata).writeInto(bitmap, {});
    EXPECT_EQ(unchanged.file, bitmap);
    EXPECT_EQ(unchanged.omitted, std::vector<std::string>{"EXIF"});
}

TEST(MetadataWriter, AddsAThumbnailWhereOneMayBe) {
    const auto thumbnail = bareFile("jpg");
    for (const std::string& format : kFormats) {
        const auto written =
            MetadataWriter(PictureMetadata()).writeInto(bareFile(format), thumbnail).file;
        EXPECT_EQ(PictureMetadata::read(written).hadThumbnail(), format != "tif") << format;
    }
}

TEST(MetadataWriter, LeavesDamagedFilesAsTheyAre) {
    PictureMetadata metadata;
    metadata.setOrientation(6);
    for (const std::string& format : kFormats) {
        for (std::size_t length = 0; length < 200; ++length) {
            auto file = bareFile(format);
            file.resize(std::min(file.size(), length));
            EXPECT_NO_THROW(MetadataWriter(metadata).writeInto(file, {})) << format << length;
        }
    }
}

} // namespace
