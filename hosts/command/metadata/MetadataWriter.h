#pragma once

#include "hosts/command/metadata/Container.h"
#include "hosts/command/metadata/PictureMetadata.h"

#include <exiv2/image.hpp>

namespace velorn {

/// The bytes of a file, and the names of the metadata that it does not hold.
struct WrittenMetadata {
    std::vector<unsigned char> file;
    std::vector<std::string> omitted;
};

/// Writes metadata into the encoded bytes of a picture.
class MetadataWriter {
public:
    explicit MetadataWriter(PictureMetadata metadata) : m_metadata(std::move(metadata)) {}

    /// `file` with the metadata, which replace all that its encoder wrote except the resolution
    /// and, in PNG files, the profile. JPEG, PNG, TIFF and WebP files hold metadata, except that
    /// WebP has no IPTC, and EXIF in JPEG and WebP files is limited to 64 KiB; others are returned
    /// unchanged. The result is read again to find what is missing.
    /// @param thumbnail a small JPEG file for formats that hold a thumbnail; may be empty
    WrittenMetadata writeInto(std::vector<unsigned char> file,
                              const std::vector<unsigned char>& thumbnail) const;

private:
    Exiv2::ExifData exifFor(Container container, const std::vector<unsigned char>& thumbnail) const;
    std::vector<unsigned char> written(Container container, const std::vector<unsigned char>& file,
                                       const std::vector<unsigned char>& thumbnail) const;
    std::vector<std::string> missingFrom(const PictureMetadata& back, Container container) const;

    PictureMetadata m_metadata;
};

} // namespace velorn
