#pragma once

#include "hosts/command/metadata/Bytes.h"
#include "hosts/command/metadata/MetadataBlocks.h"

namespace velorn {

/// Whether `file` begins like a PNG file.
bool isPng(Bytes file);

/// Reads EXIF and XMP as blocks, and texts, time, physical size and the colour description as
/// opaque chunks. Omits chunks that depend on the encoding of the pixels.
MetadataBlocks readPngMetadata(Bytes file);

/// `file` with the blocks after its header. If `blocks` has opaque chunks, it comes from a PNG
/// file, and replaces all of the encoder's own chunks of those kinds.
std::vector<unsigned char> withPngMetadata(Bytes file, const MetadataBlocks& blocks);

} // namespace velorn
