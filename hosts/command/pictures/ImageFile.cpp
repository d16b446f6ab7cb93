#include "hosts/command/pictures/ImageFile.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/MemoryFile.h"
#include "hosts/command/files/openForReading.h"
#include "hosts/command/metadata/Container.h"
#include "hosts/command/metadata/MetadataWriter.h"
#include "hosts/command/pictures/encoderAttributes.h"
#include "hosts/command/pictures/PixelScale.h"
#include "hosts/command/pictures/thumbnail.h"
#include "hosts/command/terminal/SilencedErrors.h"

#include <algorithm>
#include <array>
#include <OpenImageIO/filesystem.h>

namespace velorn {
namespace {

using OIIO::ImageInput;
using OIIO::ImageOutput;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

constexpr const char* kUnassociatedAlpha = "oiio:UnassociatedAlpha";

/// The metadata of a file. Reads the whole file only if its format has metadata blocks.
PictureMetadata metadataOf(const std::filesystem::path& path) {
    std::ifstream file = openForReading(path);
    std::vector<unsigned char> bytes(16);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (containerOf(bytes) == Container::Other) {
        return {};
    }
    file.clear();
    file.seekg(0);
    bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return PictureMetadata::read(bytes);
}

std::unique_ptr<ImageInput> openInput(const std::filesystem::path& path) {
    ImageSpec wishes;
    wishes.attribute(kUnassociatedAlpha, 1); // colours not multiplied by alpha
    auto input = ImageInput::open(path.string(), &wishes);
    if (!input) {
        throw cannotRead(path, onOneLine(OIIO::geterror()));
    }
    return input;
}

void checkChannels(const ImageSpec& spec, const std::filesystem::path& path) {
    const int colours = spec.nchannels - (spec.alpha_channel >= 0 ? 1 : 0);
    if (spec.nchannels > 4 || (colours != 1 && colours != 3)) {
        throw Failure(quoted(path) + " has " + std::to_string(spec.nchannels) +
                      " channels; only grey and RGB are supported, each with or without alpha");
    }
    if (spec.alpha_channel >= 0 && spec.alpha_channel != spec.nchannels - 1) {
        throw Failure(quoted(path) +
                      " has its alpha channel before its colours, which is not supported");
    }
    for (const char* name : {"jpeg:ColorSpace", "tiff:ColorSpace"}) {
        const auto space = spec.get_string_attribute(name);
        if (space == "CMYK" || space == "YCCK") {
            throw Failure(quoted(path) + " is a " + std::string(space) +
                          " picture; convert it to RGB first");
        }
    }
}

/// Some readers cannot seek back to the first picture, so this opens the file a second time.
void checkSinglePicture(const std::filesystem::path& path) {
    const auto input = openInput(path);
    if (input->spec().depth > 1 || input->spec().deep) {
        throw Failure(quoted(path) + " is a volume or a deep picture, which is not supported");
    }
    if (input->seek_subimage(1, 0)) {
        throw Failure(quoted(path) + " holds more than one picture; split it first");
    }
    input->geterror();
}

template <class T>
std::vector<T> readSamples(ImageInput& input, TypeDesc type, const std::filesystem::path& path) {
    const ImageSpec spec = input.spec();
    std::vector<T> samples(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
    if (!input.read_image(0, 0, 0, spec.nchannels, type, samples.data()) || input.has_error()) {
        throw cannotRead(path, onOneLine(input.geterror()));
    }
    return samples;
}

std::vector<std::uint16_t> sixteenBits(const std::vector<float>& samples,
                                       const std::filesystem::path& path) {
    std::vector<std::uint16_t> rounded(samples.size());
    std::ranges::transform(samples, rounded.begin(), [&](float sample) {
        if (!(sample >= 0.0f && sample <= 1.0f)) {
            throw Failure(quoted(path) + " has floating-point samples outside 0..1; scale it to "
                                         "that range first");
        }
        return static_cast<std::uint16_t>(sample * 65535.0f + 0.5f);
    });
    return rounded;
}

Samples readSamples(ImageInput& input, const std::filesystem::path& path) {
    const TypeDesc format = input.spec().format;
    if (format.is_floating_point()) {
        return sixteenBits(readSamples<float>(input, TypeDesc::FLOAT, path), path);
    }
    if (format.size() == 1) {
        return readSamples<std::uint8_t>(input, TypeDesc::UINT8, path);
    }
    return readSamples<std::uint16_t>(input, TypeDesc::UINT16, path);
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

/// Drops the attributes that describe the encoding of the source file.
void dropEncoding(ImageSpec& spec) {
    for (const char* name :
         {"oiio:BitsPerSample", "oiio:subimages", "planarconfig", "tiff:bilevel", "tiff:ColorSpace",
          "tiff:Compression", "tiff:PlanarConfiguration", "tiff:PhotometricInterpretation",
          "tiff:RowsPerStrip", "tiff:UnassociatedAlpha", "jpeg:ColorSpace", "jpeg:subsampling"}) {
        spec.erase_attribute(name);
    }
    spec.tile_width = spec.tile_height = spec.tile_depth = 0;
    spec.channelformats.clear();
}

void chooseCompression(ImageSpec& spec, const std::string& format) {
    static const std::array<std::string, 5> lossless{"none", "lzw", "zip", "packbits", "deflate"};
    const std::string inherited{spec.get_string_attribute("compression")};
    if (format == "jpeg") {
        spec.attribute("compression", "jpeg:97");
        spec.attribute("jpeg:subsampling", "4:4:4");
    } else if (format == "webp") {
        spec.attribute("compression", "webp:100");
    } else if (std::ranges::find(lossless, inherited) == lossless.end()) {
        spec.attribute("compression", "zip");
    }
}

std::unique_ptr<ImageOutput> createOutput(const std::filesystem::path& path) {
    auto output = ImageOutput::create(path.string());
    if (!output || !output->supports("ioproxy")) {
        OIIO::geterror();
        throw cannotWrite(path, "no picture format has the extension '" +
                                    path.extension().string() + "'");
    }
    return output;
}

} // namespace

ImageFile ImageFile::read(const std::filesystem::path& path) {
    PictureMetadata metadata = metadataOf(path);
    const SilencedErrors silenced;
    const auto input = openInput(path);
    checkChannels(input->spec(), path);
    checkSinglePicture(path);
    ImageFile file(input->spec());
    file.m_samples = readSamples(*input, path);
    file.m_sourceFormat = input->format_name();
    const std::string& format = file.m_sourceFormat;
    dropEncoding(file.m_spec);
    if (format != "tiff" && format != "openexr") {
        // Only those two formats can hold colours multiplied by alpha; they say which kind they
        // hold.
        file.m_spec.attribute(kUnassociatedAlpha, 1);
    }
    addAttributes(input->spec(), metadata);
    file.m_metadata = std::move(metadata);
    return file;
}

ImageFile::ImageFile(int width, int height, int channels, int bits)
    : m_spec(width, height, channels, bits == 8 ? TypeDesc::UINT8 : TypeDesc::UINT16) {
    const std::size_t count = m_spec.image_pixels() * static_cast<std::size_t>(channels);
    if (bits == 8) {
        m_samples = std::vector<std::uint8_t>(count);
    } else {
        m_samples = std::vector<std::uint16_t>(count);
    }
}

namespace {

template <class Samples>
VelornPicture viewOf(Samples& samples, const ImageSpec& spec) {
    // Files have one or three colours.
    const bool hasAlpha = spec.nchannels % 2 == 0;
    return std::visit(
        [&](auto& values) {
            return api::pictureOf(values.data(), spec.width, spec.height, spec.nchannels, hasAlpha);
        },
        samples);
}

} // namespace

VelornPicture ImageFile::view() {
    return viewOf(m_samples, m_spec);
}

VelornPicture ImageFile::view() const {
    return viewOf(m_samples, m_spec);
}

RgbPixels ImageFile::rgb() const {
    RgbPixels pixels{width(), height(), {}};
    std::visit(
        [&]<class T>(const std::vector<T>& samples) {
            const auto channels = static_cast<std::size_t>(m_spec.nchannels);
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
        m_samples);
    return pixels;
}

void ImageFile::setRgb(const RgbPixels& pixels) {
    std::visit(
        [&]<class T>(std::vector<T>& samples) {
            const auto& colours = std::get<std::vector<T>>(pixels.samples);
            const auto channels = static_cast<std::size_t>(m_spec.nchannels);
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
        m_samples);
}

OIIO::ImageSpec ImageFile::outputSpec(const OIIO::ImageOutput& output) const {
    ImageSpec spec = m_spec;
    const std::string format = output.format_name();
    spec.extra_attribs =
        encoderAttributes(m_spec.extra_attribs, m_sourceFormat, format, m_metadata);
    const bool isSixteenBit = std::holds_alternative<std::vector<std::uint16_t>>(m_samples);
    // OpenEXR has no 16-bit integers, and its 16-bit floats are less precise.
    spec.set_format(format == "openexr" ? TypeDesc::FLOAT
                    : isSixteenBit      ? TypeDesc::UINT16
                                        : TypeDesc::UINT8);
    chooseCompression(spec, format);
    if (spec.alpha_channel >= 0 && !output.supports("alpha")) {
        --spec.nchannels;
        spec.alpha_channel = -1;
        spec.channelnames.resize(static_cast<std::size_t>(spec.nchannels));
    }
    return spec;
}

/// Encodes in memory: some encoders end the process when a write to a file fails. `name` is the
/// name that `output` opens: a file in memory, or any name if `output` writes to a proxy.
void ImageFile::encodeTo(OIIO::ImageOutput& output, const std::filesystem::path& name) const {
    const TypeDesc type = std::holds_alternative<std::vector<std::uint8_t>>(m_samples)
                              ? TypeDesc::UINT8
                              : TypeDesc::UINT16;
    const auto pixelStep = static_cast<OIIO::stride_t>(type.size()) * m_spec.nchannels;
    const auto write = [&](const auto& samples) {
        return output.write_image(type, samples.data(), pixelStep);
    };
    if (!output.open(name.string(), outputSpec(output)) || !std::visit(write, m_samples) ||
        !output.close()) {
        throw Failure(output.geterror());
    }
}

WrittenMetadata ImageFile::encodeWithReport(const std::filesystem::path& path) const {
    const SilencedErrors silenced;
    const auto output = createOutput(path);
    std::vector<unsigned char> bytes;
    try {
        if (std::string(output->format_name()) == "tiff") {
            const MemoryFile memory;
            encodeTo(*output, memory.path());
            bytes = memory.content();
        } else {
            OIIO::Filesystem::IOVecOutput memory(bytes);
            output->set_ioproxy(&memory);
            encodeTo(*output, path);
        }
        const auto thumbnail =
            m_metadata.hadThumbnail() ? jpegThumbnail(*this) : std::vector<unsigned char>();
        WrittenMetadata written =
            MetadataWriter(outputMetadata()).writeInto(std::move(bytes), thumbnail);
        if (m_sourceFormat == "png" && std::string(output->format_name()) != "png") {
            for (const std::string& name : textNames(m_spec.extra_attribs, m_metadata)) {
                written.omitted.push_back("the text " + name);
            }
        }
        return written;
    } catch (const Failure& failure) {
        throw cannotWrite(path, onOneLine(failure.what()));
    }
}

PictureMetadata ImageFile::outputMetadata() const {
    PictureMetadata metadata = m_metadata;
    metadata.setSize(width(), height());
    return metadata;
}

void ImageFile::checkWritable(const std::filesystem::path& path) {
    createOutput(path);
}

} // namespace velorn
