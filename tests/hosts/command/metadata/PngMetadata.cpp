#include "hosts/command/metadata/PngMetadata.h"

#include <gtest/gtest.h>

namespace {

using velorn::bytesOf;
using velorn::MetadataBlocks;
using velorn::readPngMetadata;
using velorn::withPngMetadata;

const std::string kSignature("\x89PNG\r\n\x1A\n", 8);

/// A chunk with an arbitrary check sum: copied chunks keep theirs.
std::string chunk(const std::string& type, const std::string& body) {
    return velorn::bigEndianText(static_cast<std::uint32_t>(body.size()), 4) + type + body + "sum!";
}

const std::string kHeader = chunk("IHDR", "0123456789abc");
const std::string kData = chunk("IDAT", "pixels");
const std::string kEnd = chunk("IEND", "");
const std::string kText = chunk("tEXt", std::string("Author\0me", 9));
const std::string kTime = chunk("tIME", "1234567");
const std::string kSize = chunk("pHYs", "123456789");
const std::string kPalette = chunk("PLTE", "abc");

std::string with(const std::string& file, const MetadataBlocks& blocks) {
    const auto bytes = withPngMetadata(bytesOf(file), blocks);
    return {bytes.begin(), bytes.end()};
}

TEST(PngMetadata, BlocksBeforeAndAfterThePixelsAreRead) {
    const std::string xmp =
        chunk("iTXt", std::string("XML:com.adobe.xmp\0\0\0\0\0", 22) + "<x:xmpmeta/>");
    const std::string file = kSignature + kHeader + kSize + kPalette + xmp + kData + kText +
                             chunk("eXIf", "II*camera") + kEnd;
    ASSERT_TRUE(velorn::isPng(bytesOf(file)));
    const MetadataBlocks blocks = readPngMetadata(bytesOf(file));
    EXPECT_EQ(blocks.exif, "II*camera");
    EXPECT_EQ(blocks.xmp, "<x:xmpmeta/>");
    EXPECT_EQ(blocks.pngChunks, (std::vector<std::string>{kSize, kText}));
}

TEST(PngMetadata, CopiedChunksFollowTheHeaderAndReplaceThoseOfTheEncoder) {
    MetadataBlocks blocks;
    blocks.pngChunks = {kSize, kTime};
    EXPECT_EQ(with(kSignature + kHeader + kText + kPalette + kData + kEnd, blocks),
              kSignature + kHeader + kSize + kTime + kPalette + kData + kEnd);
}

TEST(PngMetadata, NewChunksHaveACheckSum) {
    MetadataBlocks blocks;
    blocks.exif = "123456789";
    const std::string file = with(kSignature + kHeader + kText + kData + kEnd, blocks);
    // CRC-32 of "eXIf123456789".
    const std::string made = std::string("\0\0\0\x09", 4) + "eXIf123456789";
    const std::size_t at = file.find(made);
    ASSERT_NE(at, std::string::npos);
    EXPECT_EQ(velorn::bigEndian32(bytesOf(file), at + made.size()), 0x7ADE7DE8u);
    EXPECT_NE(file.find(kText), std::string::npos);
}

TEST(PngMetadata, ExifAndXmpAreReadBack) {
    MetadataBlocks blocks;
    blocks.exif = "II*camera";
    blocks.xmp = "<x:xmpmeta/>";
    const std::string once = with(kSignature + kHeader + kData + kEnd, blocks);
    const MetadataBlocks back = readPngMetadata(bytesOf(once));
    EXPECT_EQ(back.exif, blocks.exif);
    EXPECT_EQ(back.xmp, blocks.xmp);
    EXPECT_EQ(with(once, blocks), once);
}

TEST(PngMetadata, DamagedFilesEndTheSearch) {
    const std::string file = kSignature + kHeader + kText + kTime;
    for (std::size_t length = kSignature.size(); length <= file.size(); ++length) {
        const std::string cut = file.substr(0, length);
        readPngMetadata(bytesOf(cut));
        EXPECT_EQ(with(cut, {}), cut);
    }
    EXPECT_TRUE(
        readPngMetadata(bytesOf(kSignature + "\xFF\xFF\xFF\xFFtEXt----sum!")).pngChunks.empty());
}

} // namespace
