#pragma once

#include "hosts/command/metadata/MetadataBlocks.h"
#include "hosts/command/pictures/RgbPixels.h"

#include <filesystem>
#include <OpenImageIO/imageio.h>
#include <string>

namespace velorn {

/// A picture in a file: its samples as the file holds them (8 or 16 bits, grey or RGB, with or
/// without alpha) and all that the file says about them.
///
/// Depths: 8-bit files stay 8 bits. 16-bit files stay 16 bits; 32-bit integers are rounded to 16.
/// Floating-point files are rounded to 16 bits when every sample lies in 0..1, and refused
/// otherwise, since highlights above white would be lost.
class ImageFile {
public:
    /// Reads the only picture of a file.
    /// @throws Failure naming the file: unreadable, not a picture, more than one picture, channels
    ///         other than grey or RGB with or without alpha, CMYK, samples outside 0..1.
    static ImageFile read(const std::filesystem::path& path);

    /// A new picture, black: `channels` 1 (grey) or 3 (RGB), `bits` 8 or 16.
    ImageFile(int width, int height, int channels, int bits);

    int width() const { return m_spec.width; }
    int height() const { return m_spec.height; }
    int channels() const { return m_spec.nchannels; }
    bool isGrey() const { return m_spec.nchannels < 3; }

    /// All samples of the picture, alpha included.
    Samples& samples() { return m_samples; }
    const Samples& samples() const { return m_samples; }

    /// The picture as the library takes it: grey as three equal channels, alpha left out, 16 bits
    /// on the scale 0..32768.
    RgbPixels rgb() const;

    /// Replaces the colours, and leaves alpha as it is. A grey picture takes the mean of the three
    /// channels. `pixels` has this picture's size and depth.
    void setRgb(const RgbPixels& pixels);

    /// How the stored rows and columns are turned for display: 1..8 as EXIF counts, 1 as stored.
    int orientation() const;

    /// The caption stored with the picture; empty when there is none.
    std::string description() const;
    void setDescription(const std::string& text);

    /// The ICC profile embedded in the picture; empty when there is none.
    std::vector<unsigned char> profile() const;
    void setProfile(const std::vector<unsigned char>& profile);

    /// The bytes of a file of the format that the extension of `path` names, metadata included.
    /// Samples keep 16 bits where the format can hold them; alpha is dropped where it cannot.
    /// JPEG is written at quality 97 without chroma subsampling, WebP at quality 100.
    /// @throws Failure when no such format can be written.
    std::vector<unsigned char> encode(const std::filesystem::path& path) const;

    /// Ends with a failure, naming `path`, when no picture can be written under such a name.
    static void checkWritable(const std::filesystem::path& path);

private:
    explicit ImageFile(OIIO::ImageSpec spec) : m_spec(std::move(spec)) {}

    OIIO::ImageSpec outputSpec(const OIIO::ImageOutput& output) const;
    MetadataBlocks outputBlocks() const;
    void encodeTo(OIIO::ImageOutput& output, const std::filesystem::path& name) const;

    OIIO::ImageSpec m_spec;
    Samples m_samples;
    MetadataBlocks m_blocks;
};

} // namespace velorn
