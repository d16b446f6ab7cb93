#include "hosts/command/metadata/MetadataBlocks.h"

#include "hosts/command/metadata/JpegMetadata.h"
#include "hosts/command/metadata/PngMetadata.h"
#include "hosts/command/metadata/WebpMetadata.h"

namespace velorn {

bool canHoldMetadataBlocks(std::span<const unsigned char> file) {
    return isJpeg(file) || isPng(file) || isWebp(file);
}

MetadataBlocks readMetadataBlocks(std::span<const unsigned char> file) {
    if (isJpeg(file)) {
        return readJpegMetadata(file);
    }
    if (isPng(file)) {
        return readPngMetadata(file);
    }
    if (isWebp(file)) {
        return readWebpMetadata(file);
    }
    return {};
}

std::vector<unsigned char> withMetadataBlocks(std::vector<unsigned char> file,
                                              const MetadataBlocks& blocks) {
    if (isJpeg(file)) {
        return withJpegMetadata(file, blocks);
    }
    if (isPng(file)) {
        return withPngMetadata(file, blocks);
    }
    if (isWebp(file)) {
        return withWebpMetadata(file, blocks);
    }
    return file;
}

} // namespace velorn
