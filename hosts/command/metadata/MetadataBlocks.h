#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace velorn {

/// The metadata that JPEG, PNG and WebP files contain as opaque blocks. The blocks are copied byte
/// for byte, which preserves data that this program does not understand (maker notes, private XMP).
struct MetadataBlocks {
    /// EXIF as a TIFF structure, without the prefix of a container.
    std::string exif;
    /// One XMP packet.
    std::string xmp;
    /// Colour profile.
    std::string icc;
    /// Other JPEG segments, each with its marker and length: extended XMP, IPTC, comments.
    std::vector<std::string> jpegSegments;
    /// Other PNG chunks, each complete: texts, times, physical size.
    std::vector<std::string> pngChunks;
};

/// Whether a file is JPEG, PNG or WebP, by its first bytes; 16 suffice.
bool canHoldMetadataBlocks(std::span<const unsigned char> file);

/// The blocks in the bytes of a file; empty for other containers. A damaged structure ends the
/// search without an error: the reader of the pixels decides whether the file is usable.
MetadataBlocks readMetadataBlocks(std::span<const unsigned char> file);

/// `file`, the bytes of a newly encoded JPEG, PNG or WebP file, whose own blocks `blocks` replace.
/// Blocks that a container cannot hold are omitted; other containers are returned unchanged.
std::vector<unsigned char> withMetadataBlocks(std::vector<unsigned char> file,
                                              const MetadataBlocks& blocks);

} // namespace velorn
