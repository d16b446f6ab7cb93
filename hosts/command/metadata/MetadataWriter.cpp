#include "hosts/command/metadata/MetadataWriter.h"

#include "hosts/command/metadata/Exiv2Session.h"
#include "hosts/command/metadata/ExtendedXmp.h"
#include "hosts/command/metadata/pngExif.h"
#include "hosts/command/metadata/storageTags.h"

#include <algorithm>
#include <cmath>
#include <exiv2/error.hpp>

namespace velorn {
namespace {

constexpr const char* kDescription = "Exif.Image.ImageDescription";

/// A JPEG segment without its length, its name and a zero.
constexpr std::size_t kLargestComment = 65532;
/// Less than a JPEG segment: directories and alignment need room, too.
constexpr long kLargestExif = 62000;

bool isPartOfMakerNote(const Exiv2::Exifdatum& datum) {
    static const std::vector<std::string> standard{"Image", "Photo", "GPSInfo", "Iop", "Thumbnail"};
    return std::ranges::find(standard, datum.groupName()) == standard.end();
}

/// The bytes that the tags take in a block, the maker note once.
long sizeOf(const Exiv2::ExifData& exif) {
    long size = 0;
    for (const Exiv2::Exifdatum& datum : exif) {
        if (!isPartOfMakerNote(datum)) {
            size += 12 + datum.size() + datum.sizeDataArea();
        }
    }
    return size;
}

/// Removes the largest tags until the others fit into a JPEG segment.
void limitSize(Exiv2::ExifData& exif) {
    if (sizeOf(exif) > kLargestExif) {
        eraseThumbnail(exif);
    }
    while (sizeOf(exif) > kLargestExif) {
        const auto largest = std::max_element(
            exif.begin(), exif.end(), [](const Exiv2::Exifdatum& a, const Exiv2::Exifdatum& b) {
                return (isPartOfMakerNote(a) ? 0 : a.size()) <
                       (isPartOfMakerNote(b) ? 0 : b.size());
            });
        exif.erase(largest);
    }
}

std::vector<unsigned char> bytesOf(Exiv2::BasicIo& io) {
    io.open();
    const Exiv2::byte* bytes = io.mmap();
    return {bytes, bytes + io.size()};
}

void setProfile(Exiv2::Image& image, const std::vector<unsigned char>& profile) {
    image.clearIccProfile();
    if (!profile.empty()) {
        Exiv2::DataBuf bytes(profile.data(), static_cast<long>(profile.size()));
        image.setIccProfile(bytes, false);
    }
}

bool holdsThumbnail(Container container) {
    // A second directory of a TIFF file is a second picture.
    return container != Container::Tiff;
}

void addResolution(const Resolution& resolution, Exiv2::ExifData& exif) {
    if (exif.findKey(Exiv2::ExifKey("Exif.Image.XResolution")) != exif.end()) {
        return;
    }
    const auto thousandths = [](float value) {
        const float limited = std::clamp(value, 0.0f, 1e6f);
        return Exiv2::URational(static_cast<std::uint32_t>(std::lround(limited * 1000.0f)), 1000);
    };
    exif["Exif.Image.XResolution"] = thousandths(resolution.horizontal);
    exif["Exif.Image.YResolution"] = thousandths(resolution.vertical);
    exif["Exif.Image.ResolutionUnit"] = static_cast<std::uint16_t>(resolution.unit);
}

/// What a message calls a tag; the many of a position and of a maker note have one name.
std::string nameOf(const Exiv2::Exifdatum& datum) {
    return isPartOfMakerNote(datum)         ? "parts of the maker note"
           : datum.groupName() == "GPSInfo" ? "GPS"
                                            : "EXIF " + datum.tagName();
}

bool isUsualOrientation(const Exiv2::Exifdatum& datum) {
    return datum.key() == "Exif.Image.Orientation" && datum.toString() == "1";
}

/// The names of tags of `expected` that `found` lacks.
std::vector<std::string> missingTags(const Exiv2::ExifData& expected,
                                     const Exiv2::ExifData& found) {
    std::vector<std::string> missing;
    for (const Exiv2::Exifdatum& datum : expected) {
        if (found.findKey(Exiv2::ExifKey(datum.key())) != found.end() ||
            isUsualOrientation(datum)) {
            continue;
        }
        const std::string name =
            found.empty() && datum.groupName() != "GPSInfo" ? "EXIF" : nameOf(datum);
        if (std::ranges::find(missing, name) == missing.end()) {
            missing.push_back(name);
        }
    }
    return missing;
}

} // namespace

Exiv2::ExifData MetadataWriter::exifFor(Container container,
                                        const std::vector<unsigned char>& thumbnail) const {
    Exiv2::ExifData exif = m_metadata.m_exif;
    const bool holdsComment = container == Container::Jpeg || container == Container::Png;
    if (!holdsComment && !m_metadata.m_comment.empty() &&
        exif.findKey(Exiv2::ExifKey(kDescription)) == exif.end()) {
        exif[kDescription] = m_metadata.m_comment;
    }
    if (container == Container::Webp && m_metadata.resolution()) {
        addResolution(*m_metadata.resolution(), exif); // the format has no other place for it
    }
    if (holdsThumbnail(container) && !thumbnail.empty()) {
        Exiv2::ExifThumb(exif).setJpegThumbnail(thumbnail.data(),
                                                static_cast<long>(thumbnail.size()));
    }
    if (container == Container::Jpeg || container == Container::Webp) {
        limitSize(exif);
    }
    return exif;
}

std::vector<unsigned char>
MetadataWriter::written(Container container, const std::vector<unsigned char>& file,
                        const std::vector<unsigned char>& thumbnail) const {
    const auto image = Exiv2::ImageFactory::open(file.data(), static_cast<long>(file.size()));
    image->readMetadata();
    image->clearExifData();
    image->clearIptcData();
    image->clearXmpData();
    image->clearXmpPacket();
    image->clearComment();
    image->setByteOrder(m_metadata.m_byteOrder);

    const Exiv2::ExifData exif = exifFor(container, thumbnail);
    if (container == Container::Webp) {
        // Exiv2 0.27 writes the profile under a wrong name unless the file has the extended layout,
        // which this introduces.
        image->writeMetadata();
    }
    if (container != Container::Png) {
        image->setExifData(exif);
        setProfile(*image, m_metadata.m_profile);
    }
    if (container != Container::Webp) {
        image->setIptcData(m_metadata.m_iptc);
    }
    if (container == Container::Png ||
        (container == Container::Jpeg && m_metadata.m_comment.size() <= kLargestComment)) {
        image->setComment(m_metadata.m_comment);
    }
    std::string packet = m_metadata.m_xmp;
    std::optional<DividedXmp> divided;
    if (container == Container::Jpeg && packet.size() > kLargestStandardXmp) {
        divided = dividedXmp(packet);
        packet = divided ? divided->standard : "";
    }
    image->xmpPacket() = packet;
    image->xmpData().setPacket(packet);
    image->writeXmpFromPacket(true);
    image->writeMetadata();

    std::vector<unsigned char> result = bytesOf(image->io());
    if (divided) {
        result = withExtendedXmp(std::move(result), *divided);
    }
    if (container == Container::Png && !exif.empty()) {
        result = withPngExif(std::move(result), exif, m_metadata.m_byteOrder);
    }
    return result;
}

std::vector<std::string> MetadataWriter::missingFrom(const PictureMetadata& back,
                                                     Container container) const {
    Exiv2::ExifData expected = m_metadata.m_exif;
    if (container == Container::Tiff) {
        eraseStorageTags(expected);
    }
    std::vector<std::string> missing = missingTags(expected, back.m_exif);
    if (m_metadata.m_iptc.count() != back.m_iptc.count()) {
        missing.emplace_back("IPTC");
    }
    if (!m_metadata.m_xmp.empty() && back.m_xmp.empty()) {
        missing.emplace_back("XMP");
    } else if (m_metadata.m_lostExtendedXmp) {
        missing.emplace_back("damaged extended XMP");
    }
    if (m_metadata.m_profile != back.m_profile) {
        missing.emplace_back("the colour profile");
    }
    if (!m_metadata.m_comment.empty() && m_metadata.m_comment != back.description() &&
        m_metadata.m_comment != back.m_comment) {
        missing.emplace_back("the comment");
    }
    return missing;
}

WrittenMetadata MetadataWriter::writeInto(std::vector<unsigned char> file,
                                          const std::vector<unsigned char>& thumbnail) const {
    const Container container = containerOf(file);
    if (container != Container::Other && container != Container::Heif) {
        const Exiv2Session session;
        try {
            file = written(container, file, thumbnail);
        } catch (const Exiv2::Error&) {
            // The file stays as encoded; what it lacks is found below.
        }
    }
    std::vector<std::string> omitted = missingFrom(PictureMetadata::read(file), container);
    return {std::move(file), std::move(omitted)};
}

} // namespace velorn
