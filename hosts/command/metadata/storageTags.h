#pragma once

#include <exiv2/exif.hpp>

namespace velorn {

/// Removes the tags that describe how a TIFF file stores its pixels (size, samples, strips,
/// compression), the blocks that TIFF stores as tags (profile, XMP, IPTC), and the directories of
/// further pictures. A file with other pixels must not repeat them.
void eraseStorageTags(Exiv2::ExifData& exif);

/// Removes the thumbnail.
/// @returns whether there was one
bool eraseThumbnail(Exiv2::ExifData& exif);

} // namespace velorn
