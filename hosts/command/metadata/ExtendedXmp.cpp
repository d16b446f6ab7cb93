#include "hosts/command/metadata/ExtendedXmp.h"

#include <algorithm>
#include <cstdint>
#include <exiv2/xmp_exiv2.hpp>
#include <lcms2_plugin.h>
#include <map>

namespace velorn {
namespace {

using Exiv2::XmpData;
using Exiv2::XmpParser;

constexpr const char* kAnnouncement = "Xmp.xmpNote.HasExtendedXMP";
const std::string kStandardName("http://ns.adobe.com/xap/1.0/\0", 29);
const std::string kExtendedName("http://ns.adobe.com/xmp/extension/\0", 35);

/// What other writers put into one segment, too.
constexpr std::size_t kExtendedPart = 65400;
/// Room for the wrapper, the namespaces and the announcement of the extended packet.
constexpr std::size_t kStandardProperties = 40000;

std::string md5(const std::string& text) {
    const cmsHANDLE state = cmsMD5alloc(nullptr);
    cmsMD5add(state, reinterpret_cast<const cmsUInt8Number*>(text.data()),
              static_cast<cmsUInt32Number>(text.size()));
    cmsProfileID digest;
    cmsMD5finish(&digest, state);
    std::string hexadecimal;
    for (const std::uint8_t byte : digest.ID8) {
        for (const int digit : {byte >> 4, byte & 15}) {
            hexadecimal += "0123456789ABCDEF"[digit];
        }
    }
    return hexadecimal;
}

std::string bigEndian(std::size_t value, int count) {
    std::string text;
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) {
        text += static_cast<char>(value >> shift & 0xFFu);
    }
    return text;
}

std::optional<XmpData> decoded(const std::string& packet) {
    XmpData data;
    if (XmpParser::decode(data, packet) != 0) {
        return std::nullopt;
    }
    return data;
}

std::optional<std::string> encoded(const XmpData& data) {
    std::string packet;
    if (XmpParser::encode(packet, data,
                          XmpParser::useCompactFormat | XmpParser::omitAllFormatting |
                              XmpParser::omitPacketWrapper) != 0) {
        return std::nullopt;
    }
    return packet;
}

/// The name of the property that contains the value `key`: structures and arrays are not divided.
std::string propertyOf(const std::string& key) {
    return key.substr(0, key.find_first_of("[/"));
}

std::map<std::string, std::size_t> propertySizes(const XmpData& data) {
    std::map<std::string, std::size_t> sizes;
    for (const Exiv2::Xmpdatum& datum : data) {
        sizes[propertyOf(datum.key())] += datum.key().size() + 6 * datum.toString().size() + 64;
    }
    return sizes;
}

std::string extendedSegments(const DividedXmp& xmp) {
    std::string segments;
    for (std::size_t at = 0; at < xmp.extended.size(); at += kExtendedPart) {
        const std::string body = kExtendedName + xmp.digest + bigEndian(xmp.extended.size(), 4) +
                                 bigEndian(at, 4) + xmp.extended.substr(at, kExtendedPart);
        segments += "\xFF\xE1" + bigEndian(body.size() + 2, 2) + body;
    }
    return segments;
}

} // namespace

bool hasExtendedXmp(const std::string& standard) {
    return standard.find("HasExtendedXMP") != std::string::npos;
}

std::optional<std::string> joinedXmp(const std::string& standard, const std::string& extended) {
    auto data = decoded(standard);
    const auto rest = decoded(extended);
    if (!data || !rest || rest->empty()) {
        return std::nullopt;
    }
    for (const Exiv2::Xmpdatum& datum : *rest) {
        if (data->findKey(Exiv2::XmpKey(datum.key())) == data->end()) {
            data->add(datum);
        }
    }
    const auto announcement = data->findKey(Exiv2::XmpKey(kAnnouncement));
    if (announcement != data->end()) {
        data->erase(announcement);
    }
    return encoded(*data);
}

std::optional<DividedXmp> dividedXmp(const std::string& packet) {
    const auto data = decoded(packet);
    if (!data) {
        return std::nullopt;
    }
    const auto sizes = propertySizes(*data);
    XmpData standard;
    XmpData extended;
    std::map<std::string, bool> isStandard;
    std::size_t used = 0;
    for (const Exiv2::Xmpdatum& datum : *data) {
        const std::string property = propertyOf(datum.key());
        if (!isStandard.contains(property)) {
            const std::size_t size = sizes.at(property);
            isStandard[property] = used + size <= kStandardProperties;
            used += isStandard[property] ? size : 0;
        }
        (isStandard[property] ? standard : extended).add(datum);
    }
    const auto extendedPacket = encoded(extended);
    if (!extendedPacket) {
        return std::nullopt;
    }
    DividedXmp divided{{}, *extendedPacket, md5(*extendedPacket)};
    standard[kAnnouncement] = divided.digest;
    const auto standardPacket = encoded(standard);
    if (!standardPacket || standardPacket->size() > kLargestStandardXmp) {
        return std::nullopt;
    }
    divided.standard = *standardPacket;
    return divided;
}

std::vector<unsigned char> withExtendedXmp(std::vector<unsigned char> file, const DividedXmp& xmp) {
    const auto name =
        std::search(file.begin(), file.end(), kStandardName.begin(), kStandardName.end());
    if (name == file.end() || name - file.begin() < 4) {
        return file;
    }
    const auto length = name - 2;
    const std::ptrdiff_t size = length[0] << 8 | length[1];
    if (file.end() - length < size) {
        return file;
    }
    const std::string segments = extendedSegments(xmp);
    file.insert(length + size, segments.begin(), segments.end());
    return file;
}

} // namespace velorn
