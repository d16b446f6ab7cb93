#include "hosts/command/metadata/MetadataNames.h"

#include "hosts/command/metadata/JpegMetadata.h"

#include <array>
#include <OpenImageIO/filesystem.h>

namespace velorn {
namespace {

constexpr const char* kName = "metadata.jpg";

/// A JPEG file of one pixel with the attributes of `metadata`; empty on failure.
std::vector<unsigned char> onePixel(const OIIO::ImageSpec& metadata) {
    OIIO::ImageSpec spec(1, 1, 3, OIIO::TypeDesc::UINT8);
    spec.extra_attribs = metadata.extra_attribs;
    spec.erase_attribute("ICCProfile");
    spec.erase_attribute("compression");
    std::vector<unsigned char> bytes;
    OIIO::Filesystem::IOVecOutput memory(bytes);
    const auto output = OIIO::ImageOutput::create(kName);
    if (!output) {
        OIIO::geterror();
        return {};
    }
    output->set_ioproxy(&memory);
    const std::array<unsigned char, 3> black{};
    if (!output->open(kName, spec) || !output->write_image(spec.format, black.data()) ||
        !output->close()) {
        output->geterror();
        return {};
    }
    return bytes;
}

bool isOfTheContainer(const std::string& name) {
    return name.starts_with("jpeg:") || name.starts_with("oiio:") || name == "ICCProfile";
}

} // namespace

void addNamedMetadata(const MetadataBlocks& blocks, OIIO::ImageSpec& spec) {
    if (blocks.exif.empty() && blocks.xmp.empty()) {
        return;
    }
    const auto bytes =
        withJpegMetadata(onePixel(OIIO::ImageSpec()), {blocks.exif, blocks.xmp, {}, {}, {}});
    OIIO::Filesystem::IOMemReader memory(bytes.data(), bytes.size());
    const auto input = OIIO::ImageInput::open(kName, nullptr, &memory);
    if (!input) {
        OIIO::geterror();
        return;
    }
    for (const OIIO::ParamValue& attribute : input->spec().extra_attribs) {
        if (!isOfTheContainer(attribute.name().string()) &&
            spec.find_attribute(attribute.name()) == nullptr) {
            spec.extra_attribs.push_back(attribute);
        }
    }
}

MetadataBlocks blocksOfNamedMetadata(const OIIO::ImageSpec& spec) {
    MetadataBlocks blocks = readJpegMetadata(onePixel(spec));
    blocks.jpegSegments.clear();
    return blocks;
}

} // namespace velorn
