#pragma once

#include "hosts/command/metadata/Bytes.h"
#include "hosts/command/metadata/MetadataBlocks.h"

namespace velorn {

/// Whether `file` begins like a WebP file.
bool isWebp(Bytes file);

/// Reads EXIF, XMP and the colour profile.
MetadataBlocks readWebpMetadata(Bytes file);

/// `file`, a single still picture, in the extended layout with the blocks in the order that
/// the format requires.
std::vector<unsigned char> withWebpMetadata(Bytes file, const MetadataBlocks& blocks);

} // namespace velorn
