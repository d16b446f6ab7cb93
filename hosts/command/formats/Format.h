#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velorn {

/// Sides and samples of a picture, as far as a format limits them.
struct PictureShape {
    int width = 0;
    int height = 0;
    /// 1 (grey), 2 (grey and alpha), 3 (RGB) or 4 (RGB and alpha)
    int channels = 3;
    /// Bits of each sample, 8 or 16.
    int bits = 8;

    bool operator==(const PictureShape&) const = default;
    bool hasAlpha() const { return channels % 2 == 0; }
};

/// How a format stores the values of pixels.
enum class Coding { lossless, lossy, both };

/// What files of a format may have room for.
enum class Room : unsigned {
    sixteenBits = 1,
    grey = 2,
    /// Alpha beside red, green and blue.
    alpha = 4,
    /// Alpha beside grey.
    greyAlpha = 8,
    // Metadata
    orientation = 16,
    profile = 32,
    exif = 64,
    xmp = 128,
    iptc = 256,
    comment = 512,
};

constexpr Room operator|(Room a, Room b) {
    return static_cast<Room>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

/// What a picture format can hold, and whether the command writes it.
struct Format {
    /// Its name in messages and lists, and in lower case the value of `--format`.
    std::string_view name;
    /// The name of its reader and writer in the image library.
    std::string_view codecName;
    /// Extensions of its files, the usual one first; empty ones are unused.
    std::array<std::string_view, 4> extensions;
    bool isWritten;
    /// The largest width and height in pixels.
    int largestSide;
    Coding coding;
    /// Whether its samples are proportional to light. Others follow a display's curve.
    bool isLinear;
    /// Everything that its files hold; metadata as far as the command keeps it.
    Room room;

    constexpr bool holds(Room kind) const {
        return (static_cast<unsigned>(room) & static_cast<unsigned>(kind)) != 0;
    }
};

/// No limit that a picture of this program reaches.
inline constexpr int kUnlimited = 2147483647;

inline constexpr Room kAllChannels = Room::grey | Room::alpha | Room::greyAlpha;
inline constexpr Room kCameraMetadata = Room::orientation | Room::profile | Room::exif | Room::xmp;

/// All formats that the command documents, those that it writes first. The limits are those of the
/// formats and of the libraries that encode them: libjpeg refuses sides above 65500 although the
/// format has room for 65535, and libpng sides above a million. HDR stores 8 bits for each colour
/// and a common exponent.
inline constexpr std::array kFormats{
    Format{"JPEG",
           "jpeg",
           {"jpg", "jpeg", "jpe", "jfif"},
           true,
           65500,
           Coding::lossy,
           false,
           Room::grey | kCameraMetadata | Room::iptc | Room::comment},
    Format{"PNG",
           "png",
           {"png"},
           true,
           1000000,
           Coding::lossless,
           false,
           Room::sixteenBits | kAllChannels | kCameraMetadata | Room::iptc | Room::comment},
    Format{"TIFF",
           "tiff",
           {"tif", "tiff"},
           true,
           kUnlimited,
           Coding::lossless,
           false,
           Room::sixteenBits | kAllChannels | kCameraMetadata | Room::iptc},
    Format{
        "WebP", "webp", {"webp"}, true, 16383, Coding::both, false, Room::alpha | kCameraMetadata},
    Format{"PNM",
           "pnm",
           {"ppm", "pgm", "pnm"},
           true,
           kUnlimited,
           Coding::lossless,
           false,
           Room::sixteenBits | Room::grey},
    Format{"BMP",
           "bmp",
           {"bmp", "dib"},
           true,
           kUnlimited,
           Coding::lossless,
           false,
           Room::grey | Room::alpha},
    Format{"TGA", "targa", {"tga"}, true, 65535, Coding::lossless, false, Room::grey | Room::alpha},
    Format{"EXR",
           "openexr",
           {"exr"},
           true,
           kUnlimited,
           Coding::lossless,
           true,
           Room::sixteenBits | kAllChannels},
    Format{"HDR", "hdr", {"hdr", "rgbe"}, true, kUnlimited, Coding::lossy, true, Room::sixteenBits},
    Format{"HEIF",
           "heif",
           {"heic", "heif", "avif"},
           false,
           kUnlimited,
           Coding::lossy,
           false,
           Room::grey | Room::alpha | kCameraMetadata},
    Format{"JPEG2000",
           "jpeg2000",
           {"jp2", "j2k", "j2c"},
           false,
           kUnlimited,
           Coding::both,
           false,
           Room::sixteenBits | Room::grey | Room::alpha},
    Format{"GIF", "gif", {"gif"}, false, 65535, Coding::lossless, false, Room::alpha},
    Format{"SGI",
           "sgi",
           {"sgi", "rgb", "rgba", "bw"},
           false,
           65535,
           Coding::lossless,
           false,
           Room::sixteenBits | kAllChannels},
    Format{"DPX",
           "dpx",
           {"dpx"},
           false,
           kUnlimited,
           Coding::lossless,
           false,
           Room::sixteenBits | Room::grey | Room::alpha},
};

/// ASCII letters in lower case.
std::string lowerCase(std::string_view text);

/// The format that the extension of `path` selects, or that `name`, the value of `--format`, has:
/// a name in the table or an extension, in any case. Null when there is none.
const Format* formatOfPath(const std::filesystem::path& path);
const Format* formatNamed(std::string_view name);

/// The format of this name in the image library; null when the table does not have it.
const Format* formatOfCodec(std::string_view codecName);

/// As `formatOfPath` and `formatNamed`, for pictures to write.
/// @throws Failure that lists the formats that the command writes.
const Format& outputFormatOfPath(const std::filesystem::path& path);
const Format& outputFormatNamed(std::string_view name);

/// Checks that a file of this format can have the sides of `shape`.
/// @throws Failure that states the limit.
void checkSides(const Format& format, const PictureShape& shape);

/// Checks that a file of this format can have samples of `bits` bits.
/// @throws Failure that states the limit.
void checkBits(const Format& format, int bits);

/// The samples that a file of this format holds of a picture: fewer bits, no alpha, or grey as RGB
/// where the format requires it.
PictureShape heldShape(const Format& format, const PictureShape& shape);

/// What `heldShape` removes, for a warning: "the alpha channel" or "16 bits per sample (8 are
/// kept)".
std::vector<std::string> lossesOf(const Format& format, const PictureShape& shape);

} // namespace velorn
