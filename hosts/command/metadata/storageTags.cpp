#include "hosts/command/metadata/storageTags.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace velorn {
namespace {

/// Tags of the first directory (TIFF 6.0, and the blocks that other formats store separately).
constexpr std::array<std::uint16_t, 49> kStorageTags{
    0x00FE, 0x00FF, // kind of the picture
    0x0100, 0x0101, 0x0102, 0x0103,
    0x0106, 0x0107, 0x0108, 0x0109, // size, depth, compression
    0x010A, 0x0111, 0x0115, 0x0116,
    0x0117, 0x0118, 0x0119, 0x011C, // strips, planes, extremes
    0x0120, 0x0121, 0x0122, 0x0123,
    0x0124, 0x0125, 0x0129, 0x013D, // grey response, page, predictor
    0x0140, 0x0142, 0x0143, 0x0144,
    0x0145, 0x014A, 0x014C, 0x0152, // palette, tiles, inks
    0x0153, 0x0154, 0x0155, 0x015B,
    0x0200, 0x0201, 0x0202, 0x0211, // sample format, JPEG
    0x0212, 0x0213, 0x0214,         // chroma subsampling
    0x02BC, 0x83BB, 0x8649, 0x8773, // XMP, IPTC, profile
};

/// The layers of an editor, which repeat the former pixels.
constexpr std::uint16_t kEditorLayers = 0x935C;

bool isFurtherPicture(std::string_view group) {
    return group.starts_with("SubImage") || group.starts_with("SubThumb") || group == "Image2" ||
           group == "Image3" || group == "Thumbnail";
}

bool describesStorage(const Exiv2::Exifdatum& datum) {
    if (datum.groupName() != "Image") {
        return isFurtherPicture(datum.groupName());
    }
    return datum.tag() == kEditorLayers ||
           std::ranges::find(kStorageTags, datum.tag()) != kStorageTags.end();
}

template <class Condition>
void eraseIf(Exiv2::ExifData& exif, const Condition& condition) {
    for (auto datum = exif.begin(); datum != exif.end();) {
        datum = condition(*datum) ? exif.erase(datum) : std::next(datum);
    }
}

} // namespace

void eraseStorageTags(Exiv2::ExifData& exif) {
    eraseIf(exif, describesStorage);
}

bool eraseThumbnail(Exiv2::ExifData& exif) {
    const long before = exif.count();
    eraseIf(exif, [](const Exiv2::Exifdatum& datum) { return datum.groupName() == "Thumbnail"; });
    return exif.count() != before;
}

} // namespace velorn
