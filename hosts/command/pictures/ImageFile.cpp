#include "hosts/command/pictures/ImageFile.h"

#include "hosts/command/codecs/decodePixels.h"
#include "hosts/command/codecs/encodePixels.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/openForReading.h"
#include "hosts/command/metadata/Container.h"
#include "hosts/command/pictures/encoderAttributes.h"
#include "hosts/command/pictures/PixelScale.h"
#include "hosts/command/pictures/thumbnail.h"
#include "hosts/command/pictures/upright.h"

#include <algorithm>
#include <array>

namespace velorn {
namespace {

using OIIO::ImageSpec;

/// The bytes of a file whose metadata or pixels are read from memory; empty for other formats.
std::vector<unsigned char> bytesOfFile(const std::filesystem::path& path) {
    std::ifstream file = openForReading(path);
    std::vector<unsigned char> bytes(16);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (containerOf(bytes) == Container::Other) {
        return {};
    }
    file.clear();
    file.seekg(0, std::ios::end);
    bytes.resize(static_cast<std::size_t>(file.tellg()));
    file.seekg(0);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

/// Adds what only the image library reads: the metadata of formats without blocks.
void addAttributes(const ImageSpec& spec, PictureMetadata& metadata) {
    const auto* profile = spec.find_attribute("ICCProfile");
    if (metadata.profile().empty() && profile != nullptr) {
        const auto* bytes = static_cast<const unsigned char*>(profile->data());
        metadata.setProfile({bytes, bytes + profile->type().size()});
    }
    addResolution(spec.extra_attribs, metadata);
    if (metadata.isOfBlocks()) {
        return;
    }
    const int orientation = spec.get_int_attribute("Orientation", 1);
    metadata.setOrientation(orientation >= 1 && orientation <= 8 ? orientation : 1);
    const std::string description{spec.get_string_attribute("ImageDescription")};
    if (!description.empty()) {
        metadata.setDescription(description);
    }
}

} // namespace

ImageFile ImageFile::read(const std::filesystem::path& path, std::uint64_t maxPixels) {
    return read(InputFile(path), maxPixels);
}

ImageFile ImageFile::read(const InputFile& input, std::uint64_t maxPixels) {
    const std::vector<unsigned char> bytes = bytesOfFile(input.openable());
    PictureMetadata metadata = PictureMetadata::read(bytes);
    DecodedPixels decoded = decodePixels(input, bytes, metadata.profile(), maxPixels);
    ImageFile file(std::move(decoded.pixels));
    file.m_encoding = std::move(decoded.encoding);
    addAttributes(decoded.spec, metadata);
    if (decoded.isConvertedToSrgb) {
        metadata.setProfile({});
    }
    file.m_metadata = std::move(metadata);
    file.m_attributes = std::move(decoded.spec.extra_attribs);
    file.m_sourceFormat = std::move(decoded.format);
    return file;
}

ImageFile::ImageFile(int width, int height, int channels, int bits)
    : m_pixels(blackPixels({width, height, channels, bits})) {}

namespace {

template <class Samples>
VelornPicture viewOf(Samples& samples, const PictureShape& shape) {
    return std::visit(
        [&](auto& values) {
            return api::pictureOf(values.data(), shape.width, shape.height, shape.channels,
                                  shape.hasAlpha());
        },
        samples);
}

} // namespace

VelornPicture ImageFile::view() {
    return viewOf(m_pixels.samples, shape());
}

VelornPicture ImageFile::view() const {
    return viewOf(m_pixels.samples, shape());
}

void ImageFile::setBits(int bits) {
    PictureShape wanted = shape();
    wanted.bits = bits;
    m_pixels = withShape(std::move(m_pixels), wanted);
}

RgbPixels ImageFile::rgb() const {
    RgbPixels pixels{width(), height(), {}};
    std::visit(
        [&]<class T>(const std::vector<T>& samples) {
            const auto channels = static_cast<std::size_t>(m_pixels.channels);
            const std::array<std::size_t, 3> offsets = isGrey()
                                                           ? std::array<std::size_t, 3>{0, 0, 0}
                                                           : std::array<std::size_t, 3>{0, 1, 2};
            std::vector<T> colours(3 * pixels.pixelCount());
            for (std::size_t i = 0; i < pixels.pixelCount(); ++i) {
                for (std::size_t c = 0; c < 3; ++c) {
                    const T sample = samples[i * channels + offsets[c]];
                    if constexpr (sizeof(T) == 1) {
                        colours[3 * i + c] = sample;
                    } else {
                        colours[3 * i + c] = toFifteenBits(sample);
                    }
                }
            }
            pixels.samples = std::move(colours);
        },
        m_pixels.samples);
    return pixels;
}

void ImageFile::setRgb(const RgbPixels& pixels) {
    std::visit(
        [&]<class T>(std::vector<T>& samples) {
            const auto& colours = std::get<std::vector<T>>(pixels.samples);
            const auto channels = static_cast<std::size_t>(m_pixels.channels);
            const auto toFile = [](std::uint32_t value) {
                if constexpr (sizeof(T) == 1) {
                    return static_cast<T>(value);
                } else {
                    return fromFifteenBits(static_cast<T>(value));
                }
            };
            for (std::size_t i = 0; i < pixels.pixelCount(); ++i) {
                const T* colour = &colours[3 * i];
                T* sample = &samples[i * channels];
                if (isGrey()) {
                    *sample = toFile((colour[0] + colour[1] + colour[2] + 1u) / 3u);
                } else {
                    std::transform(colour, colour + 3, sample, toFile);
                }
            }
        },
        m_pixels.samples);
}

PictureMetadata ImageFile::outputMetadata() const {
    PictureMetadata metadata = m_metadata;
    metadata.setSize(width(), height());
    return metadata;
}

WrittenMetadata ImageFile::encode(const Format& format, const EncodingOptions& options) const {
    PictureShape wanted = shape();
    wanted.bits = options.bits.value_or(wanted.bits);
    const PictureShape held = heldShape(format, wanted);
    const EncoderSettings settings =
        encoderSettings(options, m_encoding, format.codecName == "jpeg");
    const OIIO::ParamValueList attributes =
        encoderAttributes(m_attributes, m_sourceFormat, std::string(format.codecName), m_metadata);
    PictureMetadata metadata = outputMetadata();
    std::vector<unsigned char> bytes;
    if (const bool isTurned = !format.holds(Room::orientation) && orientation() != 1; isTurned) {
        const Pixels shown = upright(withShape(m_pixels, held), orientation());
        metadata.setSize(shown.width, shown.height);
        metadata.removeOrientation();
        bytes = encodePixels(shown, format, settings, attributes);
    } else if (held != shape()) {
        bytes = encodePixels(withShape(m_pixels, held), format, settings, attributes);
    } else {
        bytes = encodePixels(m_pixels, format, settings, attributes);
    }
    const auto thumbnail =
        m_metadata.hadThumbnail() ? jpegThumbnail(*this) : std::vector<unsigned char>();
    WrittenMetadata written =
        MetadataWriter(std::move(metadata)).writeInto(std::move(bytes), thumbnail);
    if (m_sourceFormat == "png" && format.codecName != "png") {
        for (const std::string& name : textNames(m_attributes, m_metadata)) {
            written.omitted.push_back("the text " + name);
        }
    }
    const std::vector<std::string> losses = lossesOf(format, wanted);
    written.omitted.insert(written.omitted.begin(), losses.begin(), losses.end());
    return written;
}

std::vector<unsigned char> ImageFile::encode(const std::filesystem::path& path) const {
    const Format& format = outputFormatOfPath(path);
    try {
        return encode(format, EncodingOptions{}).file;
    } catch (const Failure& failure) {
        throw cannotWrite(path, onOneLine(failure.what()));
    }
}

void ImageFile::checkWritable(const std::filesystem::path& path) {
    outputFormatOfPath(path);
}

} // namespace velorn
