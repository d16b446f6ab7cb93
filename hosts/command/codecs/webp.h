#pragma once

#include "hosts/command/codecs/EncodingOptions.h"
#include "hosts/command/pixels/Pixels.h"

#include <optional>
#include <span>
#include <vector>

namespace velorn {

/// What the header of a WebP file says.
struct WebpHeader {
    int width = 0;
    int height = 0;
    bool hasAlpha = false;
    bool isAnimated = false;
    bool isLossless = false;
};

/// The header of a WebP file in memory; nothing if the bytes are not one.
std::optional<WebpHeader> readWebpHeader(std::span<const unsigned char> file);

/// The pixels of a WebP file: 8 bits, RGB, alpha as stored.
/// @throws Failure if the file is damaged.
Pixels decodeWebp(std::span<const unsigned char> file, const WebpHeader& header);

/// The bytes of a WebP file without metadata. Lossless files keep the colours of transparent
/// pixels.
/// @param pixels 8 bits, RGB with or without alpha
/// @throws Failure that names the error.
std::vector<unsigned char> encodeWebp(const Pixels& pixels, const EncoderSettings& settings);

} // namespace velorn
