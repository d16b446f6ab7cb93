#pragma once

#include "hosts/command/metadata/MetadataBlocks.h"

#include <OpenImageIO/imageio.h>

namespace velorn {

// Some formats store metadata as opaque blocks, others as named attributes. The image library
// converts between the two only in JPEG files; therefore these functions go through a JPEG file of
// one pixel.

/// Adds the content of the EXIF and XMP blocks to `spec` as named attributes. Attributes that
/// `spec` already has stay unchanged.
void addNamedMetadata(const MetadataBlocks& blocks, OIIO::ImageSpec& spec);

/// EXIF and XMP blocks with the named attributes of `spec`; empty when there are none.
MetadataBlocks blocksOfNamedMetadata(const OIIO::ImageSpec& spec);

} // namespace velorn
