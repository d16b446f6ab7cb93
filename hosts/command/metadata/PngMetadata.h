#pragma once

#include "hosts/command/metadata/Bytes.h"
#include "hosts/command/metadata/MetadataBlocks.h"

namespace velorn {

bool isPng(Bytes file);

/// EXIF and XMP by themselves; texts, time, physical size and the colour description as opaque
/// chunks. Chunks that depend on the coding of the pixels stay behind.
MetadataBlocks readPngMetadata(Bytes file);

/// `file` with the blocks behind its header. When `blocks` has opaque chunks, it comes from a PNG
/// file, and all of the encoder's own chunks of those kinds give way.
std::vector<unsigned char> withPngMetadata(Bytes file, const MetadataBlocks& blocks);

} // namespace velorn
