#pragma once

#include "hosts/command/codecs/Subsampling.h"

#include <optional>
#include <string>

namespace velorn {

/// How the file that a picture comes from was encoded, as far as a result inherits it.
struct SourceEncoding {
    /// Estimated quality of a JPEG file, 1..100.
    std::optional<int> jpegQuality;
    std::optional<Subsampling> jpegSubsampling;
    bool isLosslessWebp = false;
    /// The compression of a TIFF file, as the image library names it.
    std::string tiffCompression;
};

/// What a user requests of the encoding; the rest follows from the source.
struct EncodingOptions {
    /// Quality of JPEG and WebP, 1..100.
    std::optional<int> quality;
    std::optional<Subsampling> subsampling;
    /// Bits per sample, 8 or 16.
    std::optional<int> bits;
};

/// The settings of an encoder.
struct EncoderSettings {
    /// Without a lossy source, JPEG and lossy WebP have this quality and full colour resolution.
    static constexpr int kDefaultQuality = 97;

    int quality = kDefaultQuality;
    Subsampling subsampling = Subsampling::none;
    bool isLossless = false;
    std::string tiffCompression;
};

/// The settings for a JPEG, WebP or TIFF file: those requested, else those of the source if it has
/// the same format, else the defaults. A requested quality makes WebP lossy.
inline EncoderSettings encoderSettings(const EncodingOptions& requested,
                                       const SourceEncoding& source, bool isJpeg) {
    EncoderSettings settings;
    const std::optional<int> inherited = isJpeg ? source.jpegQuality : std::nullopt;
    settings.quality =
        requested.quality.value_or(inherited.value_or(EncoderSettings::kDefaultQuality));
    settings.subsampling =
        requested.subsampling.value_or(source.jpegSubsampling.value_or(Subsampling::none));
    settings.isLossless = source.isLosslessWebp && !requested.quality;
    settings.tiffCompression = source.tiffCompression;
    return settings;
}

} // namespace velorn
