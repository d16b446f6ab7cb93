#include "hosts/command/metadata/MetadataNames.h"

#include <gtest/gtest.h>

namespace {

using velorn::addNamedMetadata;
using velorn::blocksOfNamedMetadata;

TEST(MetadataNames, NamedMetadataIsReadBackFromBlocks) {
    OIIO::ImageSpec spec;
    spec.attribute("Make", "A maker");
    spec.attribute("Exif:LensModel", "Fifty");
    spec.attribute("Orientation", 6);
    spec.attribute("ExposureTime", 0.01f);
    const auto blocks = blocksOfNamedMetadata(spec);
    EXPECT_FALSE(blocks.exif.empty());
    OIIO::ImageSpec back;
    addNamedMetadata(blocks, back);
    EXPECT_EQ(back.get_string_attribute("Make"), "A maker");
    EXPECT_EQ(back.get_string_attribute("Exif:LensModel"), "Fifty");
    EXPECT_EQ(back.get_int_attribute("Orientation"), 6);
    EXPECT_NEAR(back.get_float_attribute("ExposureTime"), 0.01f, 1e-5f);
}

TEST(MetadataNames, ExistingAttributesAreKept) {
    OIIO::ImageSpec spec;
    spec.attribute("Make", "A maker");
    const auto blocks = blocksOfNamedMetadata(spec);
    OIIO::ImageSpec other;
    other.attribute("Make", "Another");
    addNamedMetadata(blocks, other);
    EXPECT_EQ(other.get_string_attribute("Make"), "Another");
}

TEST(MetadataNames, AttributesOfTheIntermediateFileAreNotAdded) {
    OIIO::ImageSpec spec;
    spec.attribute("Make", "A maker");
    OIIO::ImageSpec back;
    addNamedMetadata(blocksOfNamedMetadata(spec), back);
    for (const OIIO::ParamValue& attribute : back.extra_attribs) {
        EXPECT_FALSE(attribute.name().string().starts_with("jpeg:")) << attribute.name();
        EXPECT_FALSE(attribute.name().string().starts_with("oiio:")) << attribute.name();
    }
}

TEST(MetadataNames, DamagedBlocksAreIgnored) {
    velorn::MetadataBlocks blocks;
    blocks.exif = "no such thing";
    blocks.xmp = "<<<";
    OIIO::ImageSpec spec;
    addNamedMetadata(blocks, spec);
    addNamedMetadata({}, spec);
    EXPECT_EQ(spec.get_string_attribute("Make"), "");
}

} // namespace
