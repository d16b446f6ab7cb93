#pragma once

#include <span>
#include <string>
#include <vector>

namespace velorn {

/// The metadata of a HEIF file; empty where there are none.
struct HeifBlocks {
    /// EXIF as a TIFF structure.
    std::string exif;
    /// One XMP packet.
    std::string xmp;
    std::vector<unsigned char> profile;
};

/// The metadata of the primary picture of `file`; empty if the file is damaged.
HeifBlocks heifBlocks(std::span<const unsigned char> file);

} // namespace velorn
