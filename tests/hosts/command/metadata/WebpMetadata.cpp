#include "hosts/command/metadata/WebpMetadata.h"

#include "hosts/command/pictures/ImageFile.h"

#include <gtest/gtest.h>

namespace {

using velorn::Bytes;
using velorn::MetadataBlocks;
using velorn::readWebpMetadata;
using velorn::withWebpMetadata;

std::vector<unsigned char> plainFile() {
    return velorn::ImageFile(13, 7, 3, 8).encode("a.webp");
}

MetadataBlocks someBlocks() {
    MetadataBlocks blocks;
    blocks.icc = "profile";
    blocks.exif = "II*camera";
    blocks.xmp = "<x:xmpmeta/>";
    return blocks;
}

TEST(WebpMetadata, BlocksAreReadBack) {
    const auto file = withWebpMetadata(plainFile(), someBlocks());
    ASSERT_TRUE(velorn::isWebp(file));
    const MetadataBlocks back = readWebpMetadata(file);
    EXPECT_EQ(back.icc, "profile");
    EXPECT_EQ(back.exif, "II*camera");
    EXPECT_EQ(back.xmp, "<x:xmpmeta/>");
}

TEST(WebpMetadata, ExtendedHeaderDescribesTheCanvasAndTheBlocks) {
    const auto file = withWebpMetadata(plainFile(), someBlocks());
    const std::string head(file.begin() + 12, file.begin() + 30);
    EXPECT_EQ(head, std::string("VP8X\x0A\0\0\0\x2C\0\0\0\x0C\0\0\x06\0\0", 18));
    EXPECT_EQ(velorn::littleEndian32(file, 4) + 8, file.size());
}

TEST(WebpMetadata, BlocksReplaceThoseOfAnExtendedFile) {
    const auto once = withWebpMetadata(plainFile(), someBlocks());
    EXPECT_EQ(withWebpMetadata(once, someBlocks()), once);
    MetadataBlocks other;
    other.exif = "MM*other";
    const MetadataBlocks back = readWebpMetadata(withWebpMetadata(once, other));
    EXPECT_EQ(back.exif, "MM*other");
    EXPECT_TRUE(back.icc.empty());
}

TEST(WebpMetadata, WithoutBlocksTheFileIsUnchanged) {
    EXPECT_EQ(withWebpMetadata(plainFile(), {}), plainFile());
}

TEST(WebpMetadata, PrefixOfOtherWritersIsRemoved) {
    MetadataBlocks blocks;
    blocks.exif = std::string("Exif\0\0", 6) + "II*camera";
    EXPECT_EQ(readWebpMetadata(withWebpMetadata(plainFile(), blocks)).exif, "II*camera");
}

TEST(WebpMetadata, DamagedFilesEndTheSearch) {
    const auto file = withWebpMetadata(plainFile(), someBlocks());
    for (std::size_t length = 12; length < file.size(); ++length) {
        // XMP is the last chunk: every shorter file lacks it.
        const MetadataBlocks blocks = readWebpMetadata(Bytes(file).first(length));
        EXPECT_EQ(blocks.xmp, "") << length;
        EXPECT_TRUE(blocks.exif.empty() || blocks.exif == "II*camera") << length;
        EXPECT_TRUE(blocks.icc.empty() || blocks.icc == "profile") << length;
    }
}

} // namespace
