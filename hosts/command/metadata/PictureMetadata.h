#pragma once

#include <exiv2/exif.hpp>
#include <exiv2/iptc.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velorn {

/// Pixels per unit.
struct Resolution {
    /// The unit as in EXIF: 1 none, 2 inch, 3 centimetre.
    enum class Unit { None = 1, Inch = 2, Centimetre = 3 };

    float horizontal;
    float vertical;
    Unit unit;
};

/// What a picture's file says about it: EXIF, XMP, IPTC, colour profile and comment.
///
/// Tags that describe how the source stores its pixels are not part of it. Copies may be used in
/// several threads.
class PictureMetadata {
public:
    /// The metadata in the bytes of a JPEG, PNG, TIFF, WebP or HEIF file; empty for other formats.
    /// Damaged blocks are skipped: the reader of the pixels decides whether the file is usable.
    static PictureMetadata read(std::span<const unsigned char> file);

    /// Whether the file has a format with metadata blocks.
    bool isOfBlocks() const { return m_isOfBlocks; }

    /// How the stored rows and columns are arranged for display: 1..8 as in EXIF, 1 as stored.
    int orientation() const;
    void setOrientation(int orientation);
    /// Drops the orientation, for pixels that are arranged as they are displayed.
    void removeOrientation();

    /// The caption: the description in EXIF, else the comment; empty when there is neither.
    std::string description() const;
    void setDescription(const std::string& text);

    /// The ICC profile; empty when there is none.
    const std::vector<unsigned char>& profile() const { return m_profile; }
    void setProfile(const std::vector<unsigned char>& profile) { m_profile = profile; }

    /// The resolution in EXIF, else that which was set; nothing when there is neither.
    std::optional<Resolution> resolution() const;
    /// Sets the resolution that the file states outside of EXIF.
    void setResolution(const Resolution& resolution) { m_resolution = resolution; }

    /// Whether there are blocks of EXIF, XMP or IPTC.
    bool hasBlocks() const;

    /// Corrects the width and the height in EXIF, where they are present.
    void setSize(int width, int height);

    /// Whether the file contained a thumbnail. It showed the former pixels and is not kept.
    bool hadThumbnail() const { return m_hadThumbnail; }

private:
    friend class MetadataWriter;

    void readHeif(std::span<const unsigned char> file);

    Exiv2::ExifData m_exif;
    Exiv2::IptcData m_iptc;
    /// A whole packet, which keeps properties that this program does not understand.
    std::string m_xmp;
    std::string m_comment;
    std::vector<unsigned char> m_profile;
    std::optional<Resolution> m_resolution;
    /// Some maker notes adopt the byte order of the file.
    Exiv2::ByteOrder m_byteOrder = Exiv2::littleEndian;
    bool m_isOfBlocks = false;
    bool m_hadThumbnail = false;
    bool m_lostExtendedXmp = false;
};

} // namespace velorn
