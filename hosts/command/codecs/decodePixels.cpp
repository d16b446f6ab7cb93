#include "hosts/command/codecs/decodePixels.h"

#include "hosts/command/codecs/decodeCmykJpeg.h"
#include "hosts/command/codecs/JpegHeader.h"
#include "hosts/command/codecs/webp.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/pixels/inks.h"
#include "hosts/command/pixels/linearLight.h"
#include "hosts/command/terminal/SilencedErrors.h"

#include <memory>

namespace velorn {
namespace {

using OIIO::ImageInput;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

constexpr int kReducedResolution = 1;

void checkPixelCount(int width, int height, std::uint64_t maxPixels,
                     const std::filesystem::path& path) {
    const std::uint64_t count =
        static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    if (count > maxPixels) {
        throw Failure(quoted(path) + " has " + std::to_string(width) + " by " +
                      std::to_string(height) + " pixels, more than --max-pixels " +
                      std::to_string(maxPixels) + " allows");
    }
}

/// Opens the file with alpha as stored, and inks as stored or converted to RGB.
std::unique_ptr<ImageInput> openInput(const InputFile& file, bool isRaw = false) {
    ImageSpec wishes;
    wishes.attribute("oiio:UnassociatedAlpha", 1);
    wishes.attribute("oiio:RawColor", isRaw ? 1 : 0);
    const std::string name = file.openable().string();
    auto input = ImageInput::open(name, &wishes);
    if (!input) {
        // Without its extension, the library does not find the reader of this format.
        ImageSpec ignored;
        auto sgi = ImageInput::create("sgi");
        if (sgi && sgi->open(name, ignored, wishes)) {
            return sgi;
        }
        throw cannotRead(file.shown(), file.named(onOneLine(OIIO::geterror())));
    }
    return input;
}

/// The picture in a file that may also hold reduced copies of it.
/// Some readers cannot seek back, so this opens the file a second time.
int onlyPicture(const InputFile& file) {
    const std::filesystem::path& path = file.shown();
    const auto input = openInput(file);
    if (input->spec().depth > 1 || input->spec().deep) {
        throw Failure(quoted(path) + " is a volume or a deep picture, which is not supported");
    }
    int picture = -1;
    for (int i = 0; i == 0 || input->seek_subimage(i, 0); ++i) {
        const int kind = input->spec().get_int_attribute("tiff:subfiletype", 0);
        if ((kind & kReducedResolution) != 0) {
            continue;
        }
        if (picture >= 0) {
            throw Failure(quoted(path) + " holds more than one picture; split it first");
        }
        picture = i;
    }
    input->geterror();
    if (picture < 0) {
        throw Failure(quoted(path) + " holds only a reduced copy of its picture");
    }
    return picture;
}

/// JPEG files store inks directly (CMYK) or as brightness, two colour differences and black (YCCK);
/// their header distinguishes both from other colours.
bool isCmyk(ImageInput& input, std::span<const unsigned char> bytes) {
    if (std::string(input.format_name()) == "jpeg") {
        const auto header = readJpegHeader(bytes);
        return header && header->isCmyk;
    }
    return input.spec().get_string_attribute("tiff:ColorSpace") == "CMYK";
}

void checkChannels(const ImageSpec& spec, const std::filesystem::path& path) {
    const int colours = spec.nchannels - (spec.alpha_channel >= 0 ? 1 : 0);
    if (spec.nchannels > 4 || (colours != 1 && colours != 3)) {
        throw Failure(quoted(path) + " has " + std::to_string(spec.nchannels) +
                      " channels; only grey and RGB are supported, each with or without alpha");
    }
    // The reader of GIF numbers its alpha channel, the fourth, from one.
    if (spec.alpha_channel >= 0 && spec.alpha_channel < spec.nchannels - 1) {
        throw Failure(quoted(path) +
                      " has its alpha channel before its colours, which is not supported");
    }
}

template <class T>
std::vector<T> readSamples(ImageInput& input, const std::filesystem::path& path) {
    const ImageSpec& spec = input.spec();
    std::vector<T> samples(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
    if (!input.read_image(input.current_subimage(), 0, 0, spec.nchannels,
                          OIIO::BaseTypeFromC<T>::value, samples.data()) ||
        input.has_error()) {
        throw cannotRead(path, onOneLine(input.geterror()));
    }
    return samples;
}

Pixels readPixels(ImageInput& input, const std::filesystem::path& path) {
    const ImageSpec& spec = input.spec();
    Pixels pixels{spec.width, spec.height, spec.nchannels, {}};
    const Format* format = formatOfCodec(input.format_name());
    const bool isLinear = format != nullptr && format->isLinear;
    if (isLinear || spec.format.is_floating_point()) {
        const auto samples = readSamples<float>(input, path);
        try {
            if (isLinear) {
                return fromLinearLight(samples, pixels.shape());
            }
            pixels.samples = toSixteenBits(samples);
        } catch (const Failure& failure) {
            throw Failure(quoted(path) + " " + failure.what());
        }
    } else if (spec.format.size() == 1) {
        pixels.samples = readSamples<std::uint8_t>(input, path);
    } else {
        pixels.samples = readSamples<std::uint16_t>(input, path);
    }
    const bool isAssociated = pixels.shape().hasAlpha() &&
                              std::string(input.format_name()) == "tiff" &&
                              spec.get_int_attribute("oiio:UnassociatedAlpha", 0) == 0;
    if (isAssociated) {
        unassociateAlpha(pixels);
    }
    return pixels;
}

Pixels readInks(ImageInput& input, const std::filesystem::path& path,
                std::span<const unsigned char> bytes, std::span<const unsigned char> profile) {
    const ImageSpec& spec = input.spec();
    if (profile.empty()) {
        throw Failure(quoted(path) +
                      " is a CMYK picture without a colour profile; convert it to RGB first");
    }
    Samples inks;
    if (std::string(input.format_name()) == "jpeg") {
        inks = naming(path, [&] { return decodeCmykJpeg(bytes); });
    } else if (spec.nchannels != 4) {
        throw Failure(quoted(path) + " is a CMYK picture with " + std::to_string(spec.nchannels) +
                      " channels; convert it to RGB first");
    } else if (spec.format.size() == 1) {
        inks = readSamples<std::uint8_t>(input, path);
    } else {
        inks = readSamples<std::uint16_t>(input, path);
    }
    try {
        return rgbOfInks(inks, spec.width, spec.height, profile);
    } catch (const Failure& failure) {
        throw Failure(quoted(path) + " " + failure.what());
    }
}

SourceEncoding encodingOf(ImageInput& input, std::span<const unsigned char> bytes) {
    SourceEncoding encoding;
    const std::string format = input.format_name();
    if (format == "jpeg") {
        if (const auto header = readJpegHeader(bytes)) {
            encoding.jpegQuality = header->quality;
            encoding.jpegSubsampling = header->subsampling;
        }
    } else if (format == "tiff") {
        encoding.tiffCompression = input.spec().get_string_attribute("compression");
    }
    return encoding;
}

/// Opens the picture numbered `picture` of a file.
std::unique_ptr<ImageInput> openPicture(const InputFile& file, int picture, bool isRaw) {
    auto input = openInput(file, isRaw);
    if (picture > 0 && !input->seek_subimage(picture, 0)) {
        throw cannotRead(file.shown(), file.named(onOneLine(input->geterror())));
    }
    return input;
}

DecodedPixels decodeWithLibrary(const InputFile& file, std::span<const unsigned char> bytes,
                                std::span<const unsigned char> profile, std::uint64_t maxPixels) {
    const SilencedErrors silenced;
    const std::filesystem::path& path = file.shown();
    const int picture = onlyPicture(file);
    auto input = openPicture(file, picture, false);
    checkPixelCount(input->spec().width, input->spec().height, maxPixels, path);
    DecodedPixels decoded;
    decoded.spec = input->spec();
    decoded.format = input->format_name();
    decoded.encoding = encodingOf(*input, bytes);
    if (isCmyk(*input, bytes)) {
        input = openPicture(file, picture, true);
        decoded.pixels = readInks(*input, path, bytes, profile);
        decoded.isConvertedToSrgb = true;
    } else {
        checkChannels(decoded.spec, path);
        decoded.pixels = readPixels(*input, path);
    }
    return decoded;
}

DecodedPixels decodeWebpFile(const std::filesystem::path& path,
                             std::span<const unsigned char> bytes, const WebpHeader& header,
                             std::uint64_t maxPixels) {
    if (header.isAnimated) {
        throw Failure(quoted(path) + " holds more than one picture; split it first");
    }
    checkPixelCount(header.width, header.height, maxPixels, path);
    DecodedPixels decoded;
    try {
        decoded.pixels = decodeWebp(bytes, header);
    } catch (const Failure& failure) {
        throw cannotRead(path, failure.what());
    }
    decoded.format = "webp";
    decoded.encoding.isLosslessWebp = header.isLossless;
    return decoded;
}

} // namespace

DecodedPixels decodePixels(const InputFile& file, std::span<const unsigned char> bytes,
                           std::span<const unsigned char> profile, std::uint64_t maxPixels) {
    if (const auto header = readWebpHeader(bytes)) {
        return decodeWebpFile(file.shown(), bytes, *header, maxPixels);
    }
    return decodeWithLibrary(file, bytes, profile, maxPixels);
}

} // namespace velorn
