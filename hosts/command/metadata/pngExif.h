#pragma once

#include <exiv2/exif.hpp>
#include <vector>

namespace velorn {

/// `file`, a PNG file, with `exif` in a chunk eXIf after the header (PNG, third edition, 2025,
/// section 11.3.4.5). Exiv2 writes EXIF into a compressed text instead, which few programs read.
std::vector<unsigned char> withPngExif(std::vector<unsigned char> file, const Exiv2::ExifData& exif,
                                       Exiv2::ByteOrder order);

} // namespace velorn
