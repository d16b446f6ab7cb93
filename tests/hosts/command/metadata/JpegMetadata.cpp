#include "hosts/command/metadata/JpegMetadata.h"

#include <gtest/gtest.h>

namespace {

using velorn::Bytes;
using velorn::bytesOf;
using velorn::MetadataBlocks;
using velorn::readJpegMetadata;
using velorn::withJpegMetadata;

std::string segment(char marker, const std::string& body) {
    return std::string{'\xFF', marker} +
           velorn::bigEndianText(static_cast<std::uint32_t>(body.size() + 2), 2) + body;
}

const std::string kStart = "\xFF\xD8";
const std::string kJfif = segment('\xE0', "JFIF and so on");
const std::string kTables = segment('\xDB', "quantisation");
const std::string kScan = segment('\xDA', "header") + "coded \xFF\xE1 data\xFF\xD9";
const std::string kExif = segment('\xE1', std::string("Exif\0\0", 6) + "II*camera");
const std::string kXmp =
    segment('\xE1', std::string("http://ns.adobe.com/xap/1.0/\0", 29) + "<x:xmpmeta/>");
const std::string kMoreXmp =
    segment('\xE1', std::string("http://ns.adobe.com/xmp/extension/\0", 35) + "more");
const std::string kIptc = segment('\xED', "Photoshop 3.0");
const std::string kComment = segment('\xFE', "a comment");
const std::string kProfile = segment('\xE2', "ICC_PROFILE");

std::string with(const std::string& file, const MetadataBlocks& blocks) {
    const auto bytes = withJpegMetadata(bytesOf(file), blocks);
    return {bytes.begin(), bytes.end()};
}

TEST(JpegMetadata, EveryKindOfBlockIsRead) {
    const std::string file =
        kStart + kJfif + kExif + kXmp + kMoreXmp + kIptc + kProfile + kComment + kTables + kScan;
    ASSERT_TRUE(velorn::isJpeg(bytesOf(file)));
    const MetadataBlocks blocks = readJpegMetadata(bytesOf(file));
    EXPECT_EQ(blocks.exif, "II*camera");
    EXPECT_EQ(blocks.xmp, "<x:xmpmeta/>");
    EXPECT_EQ(blocks.jpegSegments, (std::vector<std::string>{kMoreXmp, kIptc, kComment}));
}

TEST(JpegMetadata, BlocksOfOneFileAreReadBackFromAnother) {
    const std::string source =
        kStart + kJfif + kExif + kXmp + kMoreXmp + kIptc + kComment + kTables + kScan;
    const MetadataBlocks blocks = readJpegMetadata(bytesOf(source));
    const std::string target = with(kStart + kJfif + kTables + kScan, blocks);
    EXPECT_EQ(target, source);
}

TEST(JpegMetadata, BlocksReplaceTheSegmentsOfTheEncoder) {
    const std::string own = segment('\xE1', std::string("Exif\0\0", 6) + "II*poor copy");
    MetadataBlocks blocks;
    blocks.exif = "II*camera";
    EXPECT_EQ(with(kStart + kJfif + own + kProfile + kComment + kTables + kScan, blocks),
              kStart + kJfif + kExif + kProfile + kComment + kTables + kScan);
}

TEST(JpegMetadata, WithoutBlocksTheFileIsUnchanged) {
    const std::string file = kStart + kJfif + kExif + kXmp + kComment + kTables + kScan;
    EXPECT_EQ(with(file, {}), file);
}

TEST(JpegMetadata, BlocksLargerThanASegmentAreOmitted) {
    MetadataBlocks blocks;
    blocks.exif = std::string(70000, 'x');
    EXPECT_EQ(with(kStart + kJfif + kScan, blocks), kStart + kJfif + kScan);
}

TEST(JpegMetadata, DamagedFilesEndTheSearch) {
    const std::string file = kStart + kExif + kXmp;
    for (std::size_t length = 0; length <= file.size(); ++length) {
        const std::string cut = file.substr(0, length);
        if (velorn::isJpeg(bytesOf(cut))) {
            readJpegMetadata(bytesOf(cut));
            EXPECT_EQ(with(cut, {}), cut);
        }
    }
    EXPECT_TRUE(readJpegMetadata(bytesOf(kStart + std::string("\xFF\xE1\0\0", 4))).exif.empty());
}

} // namespace
