#include "hosts/command/metadata/PictureMetadata.h"

#include "hosts/command/metadata/Container.h"
#include "hosts/command/metadata/Exiv2Session.h"
#include "hosts/command/metadata/ExtendedXmp.h"
#include "hosts/command/metadata/heifBlocks.h"
#include "hosts/command/metadata/storageTags.h"

#include <exiv2/image.hpp>
#include <sstream>

namespace velorn {
namespace {

constexpr const char* kOrientation = "Exif.Image.Orientation";
constexpr const char* kDescription = "Exif.Image.ImageDescription";

std::string textOf(const Exiv2::ExifData& exif, const char* key) {
    const auto datum = exif.findKey(Exiv2::ExifKey(key));
    return datum == exif.end() ? "" : datum->toString();
}

void replace(Exiv2::ExifData& exif, const char* key, long value) {
    const auto datum = exif.findKey(Exiv2::ExifKey(key));
    if (datum != exif.end()) {
        *datum = static_cast<std::uint32_t>(value);
    }
}

std::string packetOf(const Exiv2::Image& image) {
    // The reader of TIFF files fills the data only.
    return image.xmpPacket().empty() ? image.xmpData().xmpPacket() : image.xmpPacket();
}

/// The extended part of the XMP in a JPEG file.
std::string extendedXmpOf(Exiv2::Image& image) {
    std::ostringstream text;
    image.printStructure(text, Exiv2::kpsXMP);
    return text.str();
}

} // namespace

PictureMetadata PictureMetadata::read(std::span<const unsigned char> file) {
    PictureMetadata metadata;
    const Container container = containerOf(file);
    if (container == Container::Other) {
        return metadata;
    }
    metadata.m_isOfBlocks = true;
    if (container == Container::Heif) {
        // The decoder turns the pixels, therefore the orientation in EXIF is not valid for them.
        metadata.readHeif(file);
        metadata.setOrientation(1);
        return metadata;
    }
    const Exiv2Session session;
    try {
        const auto image = Exiv2::ImageFactory::open(file.data(), static_cast<long>(file.size()));
        try {
            image->readMetadata();
        } catch (const std::exception&) {
            // What precedes the damage is used.
        }
        metadata.m_exif = image->exifData();
        metadata.m_iptc = image->iptcData();
        metadata.m_comment = image->comment();
        if (image->byteOrder() != Exiv2::invalidByteOrder) {
            metadata.m_byteOrder = image->byteOrder();
        }
        const Exiv2::DataBuf& profile = *image->iccProfile();
        metadata.m_profile.assign(profile.pData_, profile.pData_ + profile.size_);
        metadata.m_xmp = packetOf(*image);
        if (container == Container::Jpeg && hasExtendedXmp(metadata.m_xmp)) {
            const auto joined = joinedXmp(metadata.m_xmp, extendedXmpOf(*image));
            metadata.m_lostExtendedXmp = !joined;
            metadata.m_xmp = joined.value_or(metadata.m_xmp);
        }
    } catch (const std::exception&) {
        // A container that Exiv2 does not accept, for example TIFF with 64-bit offsets.
    }
    metadata.m_hadThumbnail = container != Container::Tiff && eraseThumbnail(metadata.m_exif);
    if (container == Container::Tiff) {
        eraseStorageTags(metadata.m_exif);
    }
    return metadata;
}

void PictureMetadata::readHeif(std::span<const unsigned char> file) {
    HeifBlocks blocks = heifBlocks(file);
    const Exiv2Session session;
    try {
        m_byteOrder = Exiv2::ExifParser::decode(
            m_exif, reinterpret_cast<const Exiv2::byte*>(blocks.exif.data()),
            static_cast<std::uint32_t>(blocks.exif.size()));
    } catch (const std::exception&) {
        m_exif.clear();
    }
    m_xmp = std::move(blocks.xmp);
    m_profile = std::move(blocks.profile);
    m_hadThumbnail = eraseThumbnail(m_exif);
}

int PictureMetadata::orientation() const {
    const auto datum = m_exif.findKey(Exiv2::ExifKey(kOrientation));
    const long orientation = datum == m_exif.end() || datum->count() == 0 ? 1 : datum->toLong();
    return orientation >= 1 && orientation <= 8 ? static_cast<int>(orientation) : 1;
}

void PictureMetadata::setOrientation(int orientation) {
    if (orientation != this->orientation()) {
        m_exif[kOrientation] = static_cast<std::uint16_t>(orientation);
    }
}

void PictureMetadata::removeOrientation() {
    const auto datum = m_exif.findKey(Exiv2::ExifKey(kOrientation));
    if (datum != m_exif.end()) {
        m_exif.erase(datum);
    }
}

std::string PictureMetadata::description() const {
    const std::string text = textOf(m_exif, kDescription);
    return text.empty() ? m_comment : text;
}

void PictureMetadata::setDescription(const std::string& text) {
    m_exif[kDescription] = text;
}

std::optional<Resolution> PictureMetadata::resolution() const {
    const auto horizontal = m_exif.findKey(Exiv2::ExifKey("Exif.Image.XResolution"));
    const auto vertical = m_exif.findKey(Exiv2::ExifKey("Exif.Image.YResolution"));
    if (horizontal == m_exif.end() || vertical == m_exif.end()) {
        return m_resolution;
    }
    const std::string unit = textOf(m_exif, "Exif.Image.ResolutionUnit");
    const Resolution found{horizontal->toFloat(), vertical->toFloat(),
                           unit == "1"   ? Resolution::Unit::None
                           : unit == "3" ? Resolution::Unit::Centimetre
                                         : Resolution::Unit::Inch};
    const bool isUsable = found.horizontal > 0.0f && found.vertical > 0.0f;
    return isUsable ? std::optional(found) : std::nullopt;
}

bool PictureMetadata::hasBlocks() const {
    return !m_exif.empty() || !m_iptc.empty() || !m_xmp.empty();
}

void PictureMetadata::setSize(int width, int height) {
    for (const char* key : {"Exif.Photo.PixelXDimension", "Exif.Image.ImageWidth"}) {
        replace(m_exif, key, width);
    }
    for (const char* key : {"Exif.Photo.PixelYDimension", "Exif.Image.ImageLength"}) {
        replace(m_exif, key, height);
    }
}

} // namespace velorn
