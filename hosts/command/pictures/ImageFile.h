#pragma once

#include "hosts/command/codecs/EncodingOptions.h"
#include "hosts/command/files/InputFile.h"
#include "hosts/command/metadata/MetadataWriter.h"
#include "hosts/command/pictures/RgbPixels.h"
#include "hosts/command/pixels/Pixels.h"
#include "velorn.hpp"

#include <cstdint>
#include <filesystem>
#include <OpenImageIO/imageio.h>
#include <string>
#include <vector>

namespace velorn {

/// A picture in a file: its samples (8 or 16 bits, grey or RGB, with or without alpha) and its
/// metadata.
///
/// 8-bit files stay 8 bits and 16-bit files stay 16 bits; 32-bit integers are rounded to 16.
/// Floating-point files are rounded to 16 bits if every sample lies in 0..1. Others are refused,
/// because highlights above white would be lost. Samples proportional to light (OpenEXR, HDR) are
/// coded with the curve of sRGB, alpha that is multiplied into the colours is divided out, and CMYK
/// pictures become sRGB.
class ImageFile {
public:
    static constexpr std::uint64_t kDefaultMaxPixels = 400'000'000;

    /// Reads a file that holds a single picture.
    /// @param maxPixels pixels that the picture may have
    /// @throws Failure that names the file: unreadable, not a picture, too large, more than one
    ///         picture, channels other than grey or RGB with or without alpha, CMYK without a
    ///         profile, samples outside 0..1.
    static ImageFile read(const std::filesystem::path& path,
                          std::uint64_t maxPixels = kDefaultMaxPixels);
    static ImageFile read(const InputFile& input, std::uint64_t maxPixels = kDefaultMaxPixels);

    /// A new black picture: `channels` 1 (grey) or 3 (RGB), `bits` 8 or 16.
    ImageFile(int width, int height, int channels, int bits);

    int width() const { return m_pixels.width; }
    int height() const { return m_pixels.height; }
    int channels() const { return m_pixels.channels; }
    PictureShape shape() const { return m_pixels.shape(); }
    bool isGrey() const { return m_pixels.channels < 3; }

    /// All samples of the picture, alpha included.
    Samples& samples() { return m_pixels.samples; }
    const Samples& samples() const { return m_pixels.samples; }

    /// Converts the samples to 8 or 16 bits.
    void setBits(int bits);

    /// The pixels in place, as the restoration library takes them.
    VelornPicture view();
    /// The same for calls that only read.
    VelornPicture view() const;

    /// The picture in the form that the display functions take: grey as three equal channels,
    /// without alpha, 16 bits on the scale 0..32768.
    RgbPixels rgb() const;

    /// Replaces the colours and keeps alpha. A grey picture receives the mean of the three
    /// channels. `pixels` has the size and the depth of this picture.
    void setRgb(const RgbPixels& pixels);

    /// How the stored rows and columns are arranged for display: 1..8 as in EXIF, 1 as stored.
    int orientation() const { return m_metadata.orientation(); }

    /// The caption stored with the picture; empty when there is none.
    std::string description() const { return m_metadata.description(); }
    void setDescription(const std::string& text) { m_metadata.setDescription(text); }

    /// The ICC profile embedded in the picture; empty when there is none.
    const std::vector<unsigned char>& profile() const { return m_metadata.profile(); }
    void setProfile(const std::vector<unsigned char>& profile) { m_metadata.setProfile(profile); }

    /// Encodes the picture with its metadata. Samples keep 16 bits and alpha where the format holds
    /// them; the rows and columns are turned upright where it does not hold the orientation.
    /// @returns the bytes of the file, and the names of what it does not hold
    /// @throws Failure when the picture cannot be encoded.
    WrittenMetadata encode(const Format& format, const EncodingOptions& options) const;

    /// The same without options; the extension of `path` selects the format.
    /// @returns the bytes of the file
    /// @throws Failure that names `path`.
    std::vector<unsigned char> encode(const std::filesystem::path& path) const;

    /// Checks that the extension of `path` selects a format that can be written.
    /// @throws Failure that names `path`.
    static void checkWritable(const std::filesystem::path& path);

private:
    explicit ImageFile(Pixels pixels) : m_pixels(std::move(pixels)) {}

    PictureMetadata outputMetadata() const;

    Pixels m_pixels;
    SourceEncoding m_encoding;
    PictureMetadata m_metadata;
    /// What the image library finds in the file besides.
    OIIO::ParamValueList m_attributes;
    /// As OpenImageIO names it; empty for a new picture.
    std::string m_sourceFormat;
};

} // namespace velorn
