#include "hosts/command/metadata/MetadataBlocks.h"

#include "hosts/command/pictures/ImageFile.h"

#include <gtest/gtest.h>

namespace {

using velorn::MetadataBlocks;
using velorn::readMetadataBlocks;
using velorn::withMetadataBlocks;

TEST(MetadataBlocks, ContainerIsRecognisedByItsBytes) {
    MetadataBlocks blocks;
    blocks.exif = "II*camera";
    for (const char* name : {"a.jpg", "a.png", "a.webp"}) {
        const auto file = withMetadataBlocks(velorn::ImageFile(5, 4, 3, 8).encode(name), blocks);
        EXPECT_EQ(readMetadataBlocks(file).exif, "II*camera") << name;
    }
}

TEST(MetadataBlocks, OtherContainersAreUnchanged) {
    MetadataBlocks blocks;
    blocks.exif = "II*camera";
    const auto file = velorn::ImageFile(5, 4, 3, 8).encode("a.tif");
    EXPECT_EQ(withMetadataBlocks(file, blocks), file);
    EXPECT_TRUE(readMetadataBlocks(file).exif.empty());
    EXPECT_TRUE(readMetadataBlocks({}).exif.empty());
}

} // namespace
