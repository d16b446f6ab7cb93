#pragma once

#include "hosts/command/codecs/EncodingOptions.h"
#include "hosts/command/files/InputFile.h"
#include "hosts/command/pixels/Pixels.h"

#include <cstdint>
#include <filesystem>
#include <OpenImageIO/imageio.h>
#include <span>
#include <string>

namespace velorn {

/// The pixels of a file, and what belongs to them.
struct DecodedPixels {
    Pixels pixels;
    SourceEncoding encoding;
    /// As OpenImageIO names it.
    std::string format;
    /// The attributes that the image library finds in the file.
    OIIO::ImageSpec spec;
    /// Whether the colours are sRGB instead of what the file's profile describes.
    bool isConvertedToSrgb = false;
};

/// Decodes the pixels of a file that holds a single picture. A reduced copy of the picture does not
/// count. 32-bit integers and floats are rounded to 16 bits.
/// @param bytes the content of the file; only JPEG and WebP files need it
/// @param profile the ICC profile in the file; only CMYK pictures need it
/// @param maxPixels pixels that the picture may have; checked before memory is allocated for them
/// @throws Failure that names the file: not a picture, too large, more than one picture, channels
///         other than grey or RGB with or without alpha, CMYK without profile, samples outside
///         0..1.
DecodedPixels decodePixels(const InputFile& file, std::span<const unsigned char> bytes,
                           std::span<const unsigned char> profile, std::uint64_t maxPixels);

} // namespace velorn
