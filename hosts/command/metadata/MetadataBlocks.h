#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace velorn {

/// The metadata that JPEG, PNG and WebP files carry as opaque blocks. They pass through byte for
/// byte, so that what no reader of ours understands (maker notes, private XMP) survives as well.
struct MetadataBlocks {
    /// EXIF as a TIFF structure, without any container's prefix.
    std::string exif;
    /// One XMP packet.
    std::string xmp;
    /// Colour profile.
    std::string icc;
    /// Further JPEG segments, each with its marker and length: extended XMP, IPTC, comments.
    std::vector<std::string> jpegSegments;
    /// Further PNG chunks, each complete: texts, times, physical size.
    std::vector<std::string> pngChunks;
};

/// The blocks of a file's bytes; empty for other containers. Damaged structures end the search and
/// are never an error: the pixels' reader decides on those.
MetadataBlocks readMetadataBlocks(std::span<const unsigned char> file);

/// `file` (freshly encoded JPEG, PNG or WebP bytes) with `blocks` in the place of its own; other
/// containers come back as they are. Blocks that a container cannot hold are left out.
std::vector<unsigned char> withMetadataBlocks(std::vector<unsigned char> file,
                                              const MetadataBlocks& blocks);

} // namespace velorn
