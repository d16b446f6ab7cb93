#pragma once

#include "hosts/command/metadata/Bytes.h"
#include "hosts/command/metadata/MetadataBlocks.h"

namespace velorn {

bool isJpeg(Bytes file);

/// EXIF, XMP, extended XMP, IPTC and comments. Colour profiles are left to the pixels' reader;
/// segments that speak of positions in the file or of its coding stay behind.
MetadataBlocks readJpegMetadata(Bytes file);

/// `file` with its own segments of each kind replaced where `blocks` has some of that kind.
/// A block larger than a segment (64 KiB) is left out.
std::vector<unsigned char> withJpegMetadata(Bytes file, const MetadataBlocks& blocks);

} // namespace velorn
