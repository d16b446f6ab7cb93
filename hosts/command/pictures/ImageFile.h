#pragma once

#include "hosts/command/metadata/MetadataWriter.h"
#include "hosts/command/pictures/RgbPixels.h"
#include "velorn.hpp"

#include <filesystem>
#include <OpenImageIO/imageio.h>
#include <string>

namespace velorn {

/// A picture in a file: its samples as stored (8 or 16 bits, grey or RGB, with or without alpha)
/// and its metadata.
///
/// 8-bit files stay 8 bits and 16-bit files stay 16 bits; 32-bit integers are rounded to 16.
/// Floating-point files are rounded to 16 bits if every sample lies in 0..1. Others are refused,
/// because highlights above white would be lost.
class ImageFile {
public:
    /// Reads a file that holds a single picture.
    /// @throws Failure that names the file: unreadable, not a picture, more than one picture,
    ///         channels other than grey or RGB with or without alpha, CMYK, samples outside 0..1.
    static ImageFile read(const std::filesystem::path& path);

    /// A new black picture: `channels` 1 (grey) or 3 (RGB), `bits` 8 or 16.
    ImageFile(int width, int height, int channels, int bits);

    int width() const { return m_spec.width; }
    int height() const { return m_spec.height; }
    int channels() const { return m_spec.nchannels; }
    bool isGrey() const { return m_spec.nchannels < 3; }

    /// All samples of the picture, alpha included.
    Samples& samples() { return m_samples; }
    const Samples& samples() const { return m_samples; }

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

    /// Encodes the picture with its metadata. The extension of `path` selects the format. Samples
    /// keep 16 bits and alpha where the format supports them. JPEG is written at quality 97 without
    /// chroma subsampling, WebP at quality 100.
    /// @returns the bytes of the file, and the names of the metadata that it does not hold
    /// @throws Failure that names `path` when the format cannot be written.
    WrittenMetadata encodeWithReport(const std::filesystem::path& path) const;
    /// The bytes alone, for pictures whose metadata fit into every format.
    std::vector<unsigned char> encode(const std::filesystem::path& path) const {
        return encodeWithReport(path).file;
    }

    /// Checks that the extension of `path` selects a format that can be written.
    /// @throws Failure that names `path`.
    static void checkWritable(const std::filesystem::path& path);

private:
    explicit ImageFile(OIIO::ImageSpec spec) : m_spec(std::move(spec)) {}

    OIIO::ImageSpec outputSpec(const OIIO::ImageOutput& output) const;
    PictureMetadata outputMetadata() const;
    void encodeTo(OIIO::ImageOutput& output, const std::filesystem::path& name) const;

    OIIO::ImageSpec m_spec;
    /// As OpenImageIO names it; empty for a new picture.
    std::string m_sourceFormat;
    Samples m_samples;
    PictureMetadata m_metadata;
};

} // namespace velorn
