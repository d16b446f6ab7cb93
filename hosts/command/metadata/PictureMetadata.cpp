#include "hosts/command/metadata/PictureMetadata.h"

#include "hosts/command/metadata/Container.h"
#include "hosts/command/metadata/Exiv2Session.h"
#include "hosts/command/metadata/ExtendedXmp.h"
#include "hosts/command/metadata/storageTags.h"

#include <cmath>
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
    const Exiv2Session session;
    try {
        const auto image =
            Exiv2::ImageFactory::open(file.data(), static_cast<long>(file.size()));
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
    if (container == Container::Heif) {
        metadata.setOrientation(1); // the decoder turns the pixels
    }
    return metadata;
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

std::string PictureMetadata::description() const {
    const std::string text = textOf(m_exif, kDescription);
    return text.empty() ? m_comment : text;
}

void PictureMetadata::setDescription(const std::string& text) {
    m_exif[kDescription] = text;
}

void PictureMetadata::setResolution(float horizontal, float vertical, int unit) {
    if (!textOf(m_exif, "Exif.Image.XResolution").empty()) {
        return;
    }
    const auto thousandths = [](float value) {
        return Exiv2::URational(static_cast<std::uint32_t>(std::lround(value * 1000.0f)), 1000);
    };
    m_exif["Exif.Image.XResolution"] = thousandths(horizontal);
    m_exif["Exif.Image.YResolution"] = thousandths(vertical);
    m_exif["Exif.Image.ResolutionUnit"] = static_cast<std::uint16_t>(unit);
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
