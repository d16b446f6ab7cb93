#pragma once

#include "hosts/command/metadata/Bytes.h"
#include "hosts/command/metadata/MetadataBlocks.h"

namespace velorn {

bool isWebp(Bytes file);

/// EXIF, XMP and the colour profile.
MetadataBlocks readWebpMetadata(Bytes file);

/// `file` (one still picture) in the extended layout, with the blocks in their prescribed order.
std::vector<unsigned char> withWebpMetadata(Bytes file, const MetadataBlocks& blocks);

} // namespace velorn
