#pragma once

#include "hosts/command/metadata/MetadataBlocks.h"

#include <OpenImageIO/imageio.h>

namespace velorn {

// Some formats carry metadata as opaque blocks, others as named attributes. The picture library
// translates between the two within JPEG files only: hence a picture of one pixel in between.

/// Adds to `spec` what the EXIF and XMP blocks say, by name; attributes that `spec` has stay.
void addNamedMetadata(const MetadataBlocks& blocks, OIIO::ImageSpec& spec);

/// The EXIF and XMP blocks that say what `spec` has by name; empty when there is nothing to say.
MetadataBlocks blocksOfNamedMetadata(const OIIO::ImageSpec& spec);

} // namespace velorn
