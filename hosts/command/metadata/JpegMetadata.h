#pragma once

#include "hosts/command/metadata/Bytes.h"
#include "hosts/command/metadata/MetadataBlocks.h"

namespace velorn {

/// Whether `file` begins like a JPEG file.
bool isJpeg(Bytes file);

/// Reads EXIF, XMP, extended XMP, IPTC and comments. Omits colour profiles, which the image library
/// reads, and segments that describe positions in the file or its encoding.
MetadataBlocks readJpegMetadata(Bytes file);

/// `file` with the segments of `blocks`, which replace those of the same kind. Blocks larger than a
/// segment (64 KiB) are omitted.
std::vector<unsigned char> withJpegMetadata(Bytes file, const MetadataBlocks& blocks);

} // namespace velorn
