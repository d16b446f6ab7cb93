#include "hosts/command/metadata/JpegMetadata.h"

#include <algorithm>
#include <functional>

namespace velorn {
namespace {

constexpr unsigned char kApp1 = 0xE1;
constexpr unsigned char kApp13 = 0xED;
constexpr unsigned char kComment = 0xFE;
constexpr unsigned char kStartOfScan = 0xDA;

const std::string kExifPrefix("Exif\0\0", 6);
const std::string kXmpPrefix("http://ns.adobe.com/xap/1.0/\0", 29);
const std::string kExtendedXmpPrefix("http://ns.adobe.com/xmp/extension/\0", 35);

/// One marker segment: `whole` includes marker and length, `body` does not.
struct Segment {
    unsigned char marker;
    Bytes whole;
    Bytes body;

    bool isExif() const { return marker == kApp1 && startsWith(body, kExifPrefix); }
    bool isXmp() const { return marker == kApp1 && startsWith(body, kXmpPrefix); }
    bool isExtendedXmp() const { return marker == kApp1 && startsWith(body, kExtendedXmpPrefix); }
    bool isApplication0() const { return marker == 0xE0; }
};

/// Visits the segments between the start of the image and the first scan. Returns the position of
/// the first byte after them.
std::size_t forEachSegment(Bytes file, const std::function<void(const Segment&)>& visit) {
    std::size_t at = 2;
    while (at + 4 <= file.size() && file[at] == 0xFF && file[at + 1] != kStartOfScan) {
        if (file[at + 1] == 0xFF) { // a fill byte
            ++at;
            continue;
        }
        const std::size_t length = bigEndian16(file, at + 2);
        if (length < 2 || at + 2 + length > file.size()) {
            break;
        }
        visit({file[at + 1], file.subspan(at, length + 2), file.subspan(at + 4, length - 2)});
        at += length + 2;
    }
    return at;
}

/// Whether segments of this kind are copied without interpretation.
bool isOpaqueKind(const Segment& segment) {
    return segment.isExtendedXmp() || segment.marker == kApp13 || segment.marker == kComment;
}

std::string segmentText(unsigned char marker, const std::string& body) {
    if (body.size() + 2 > 0xFFFF) {
        return {};
    }
    return std::string{'\xFF', static_cast<char>(marker)} +
           bigEndianText(static_cast<std::uint32_t>(body.size() + 2), 2) + body;
}

/// Whether `blocks` has segments of the kind of `own`, which replace it.
bool isReplaced(const Segment& own, const MetadataBlocks& blocks) {
    if (own.isExif()) {
        return !blocks.exif.empty();
    }
    if (own.isXmp()) {
        return !blocks.xmp.empty();
    }
    return isOpaqueKind(own) &&
           std::ranges::any_of(blocks.jpegSegments, [&](const std::string& carried) {
               return static_cast<unsigned char>(carried[1]) == own.marker;
           });
}

} // namespace

bool isJpeg(Bytes file) {
    return startsWith(file, "\xFF\xD8\xFF");
}

MetadataBlocks readJpegMetadata(Bytes file) {
    MetadataBlocks blocks;
    forEachSegment(file, [&](const Segment& segment) {
        if (segment.isExif() && blocks.exif.empty()) {
            blocks.exif = textOf(segment.body.subspan(kExifPrefix.size()));
        } else if (segment.isXmp() && blocks.xmp.empty()) {
            blocks.xmp = textOf(segment.body.subspan(kXmpPrefix.size()));
        } else if (isOpaqueKind(segment)) {
            blocks.jpegSegments.push_back(textOf(segment.whole));
        }
    });
    return blocks;
}

std::vector<unsigned char> withJpegMetadata(Bytes file, const MetadataBlocks& blocks) {
    std::string carried;
    if (!blocks.exif.empty()) {
        carried += segmentText(kApp1, kExifPrefix + blocks.exif);
    }
    if (!blocks.xmp.empty()) {
        carried += segmentText(kApp1, kXmpPrefix + blocks.xmp);
    }
    for (const std::string& segment : blocks.jpegSegments) {
        carried += segment;
    }
    // The JFIF segment must come first, followed by EXIF.
    std::string head = textOf(file.first(2));
    std::string rest;
    const std::size_t scan = forEachSegment(file, [&](const Segment& segment) {
        if (segment.isApplication0()) {
            head += textOf(segment.whole);
        } else if (!isReplaced(segment, blocks)) {
            rest += textOf(segment.whole);
        }
    });
    std::vector<unsigned char> result;
    result.reserve(head.size() + carried.size() + rest.size() + file.size() - scan);
    for (const Bytes part : {bytesOf(head), bytesOf(carried), bytesOf(rest), file.subspan(scan)}) {
        result.insert(result.end(), part.begin(), part.end());
    }
    return result;
}

} // namespace velorn
