#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velorn {

// A JPEG segment holds less than 64 KiB. A larger XMP packet is divided: the standard packet names
// the digest of the extended one, which fills as many segments as it needs (XMP, Storage in Files,
// 2020, section 1.1.3.1). An `Exiv2Session` is open during these calls.

/// The size of the largest packet in one segment.
inline constexpr std::size_t kLargestStandardXmp = 65502;

/// The two packets of a divided one.
struct DividedXmp {
    std::string standard;
    std::string extended;
    /// The MD5 digest of `extended` in 32 hexadecimal digits.
    std::string digest;
};

/// Whether `standard` announces an extended packet.
bool hasExtendedXmp(const std::string& standard);

/// One packet with the properties of both; nothing if one of them is damaged.
std::optional<std::string> joinedXmp(const std::string& standard, const std::string& extended);

/// `packet` in two parts, the first of which fits into a segment; nothing if `packet` is damaged.
std::optional<DividedXmp> dividedXmp(const std::string& packet);

/// `file`, a JPEG file with the standard packet of `xmp`, followed by the segments of the extended
/// one; unchanged if the standard packet is not found.
std::vector<unsigned char> withExtendedXmp(std::vector<unsigned char> file, const DividedXmp& xmp);

} // namespace velorn
