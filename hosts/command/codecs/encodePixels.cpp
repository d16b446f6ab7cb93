#include "hosts/command/codecs/encodePixels.h"

#include "hosts/command/codecs/encodeJpeg.h"
#include "hosts/command/codecs/encodePnm.h"
#include "hosts/command/codecs/webp.h"
#include "hosts/command/files/MemoryFile.h"
#include "hosts/command/pixels/linearLight.h"
#include "hosts/command/terminal/Failure.h"
#include "hosts/command/terminal/SilencedErrors.h"

#include <algorithm>
#include <array>
#include <OpenImageIO/filesystem.h>

namespace velorn {
namespace {

using OIIO::ImageOutput;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

// Encoding takes less time than restoring (docs/formats.md has figures). Restored photographs have
// noise and hardly any repetitions; looking for these takes long and saves little.

/// Filters of PNG files as libpng numbers them. A choice for each row takes longer and saves
/// nothing in photographs.
constexpr int kPngAverage = 64;
constexpr int kPngPaeth = 128;
/// Effort of the compression, 1..9.
constexpr int kTiffEffort = 1;

/// The compression of a TIFF file. LZW makes 16-bit photographs larger and takes long.
std::string tiffCompression(const std::string& inherited, int bits) {
    static const std::array<std::string, 3> fast{"none", "packbits", "lzw"};
    const bool isKept =
        std::ranges::find(fast, inherited) != fast.end() && (inherited != "lzw" || bits == 8);
    return isKept ? inherited : "zip";
}

void chooseCompression(ImageSpec& spec, const Pixels& pixels, const Format& format,
                       const EncoderSettings& settings) {
    if (format.codecName == "png") {
        spec.attribute("compression", "rle");
        spec.attribute("png:filter", pixels.bits() == 16 ? kPngAverage : kPngPaeth);
    } else if (format.codecName == "tiff") {
        const std::string compression = tiffCompression(settings.tiffCompression, pixels.bits());
        spec.attribute("compression", compression);
        if (compression == "zip") {
            spec.attribute("tiff:zipquality", kTiffEffort);
            // A strip that arrives in one piece is compressed three times as fast.
            spec.attribute("tiff:RowsPerStrip", 1);
            // The library's threads use another encoder, whose bytes differ.
            spec.attribute("tiff:multithread", 0);
        }
    } else if (format.codecName == "openexr") {
        spec.attribute("compression", "rle");
        // Without any, the image library takes the present time for that of the photograph.
        spec.attribute("DateTime", "");
    }
}

/// Describes the pixels and nothing else.
ImageSpec bareSpec(const Pixels& pixels, const Format& format, const EncoderSettings& settings,
                   const OIIO::ParamValueList& attributes) {
    ImageSpec spec(pixels.width, pixels.height, pixels.channels,
                   format.isLinear       ? TypeDesc::FLOAT
                   : pixels.bits() == 16 ? TypeDesc::UINT16
                                         : TypeDesc::UINT8);
    if (format.codecName == "png" || format.codecName == "tiff") {
        spec.extra_attribs = attributes;
        spec.erase_attribute("compression");
        spec.erase_attribute("oiio:UnassociatedAlpha");
    }
    if (pixels.shape().hasAlpha()) {
        spec.alpha_channel = pixels.channels - 1;
        spec.channelnames.back() = std::string(1, 'A');
        if (!format.isLinear) {
            spec.attribute("oiio:UnassociatedAlpha", 1);
        }
    }
    chooseCompression(spec, pixels, format, settings);
    return spec;
}

PixelDensity densityOf(const OIIO::ParamValueList& attributes) {
    const float horizontal = attributes.get_float("XResolution");
    const float vertical = attributes.get_float("YResolution", horizontal);
    const std::string unit{attributes.get_string("ResolutionUnit")};
    const bool isKnown =
        horizontal >= 1.0f && horizontal < 65535.0f && vertical >= 1.0f && vertical < 65535.0f;
    if (!isKnown || (unit != "in" && unit != "cm")) {
        return {};
    }
    return {static_cast<int>(horizontal + 0.5f), static_cast<int>(vertical + 0.5f),
            unit == "in" ? 1 : 2};
}

/// `name` is the name that `output` opens: a file in memory, or any name if `output` writes to a
/// proxy.
void writeTo(ImageOutput& output, const std::string& name, const ImageSpec& spec,
             const Pixels& pixels) {
    const auto write = [&](const auto& samples) {
        using Sample = std::decay_t<decltype(samples.front())>;
        return output.write_image(OIIO::BaseTypeFromC<Sample>::value, samples.data());
    };
    if (!output.open(name, spec) ||
        !(spec.format == TypeDesc::FLOAT ? write(toLinearLight(pixels))
                                         : std::visit(write, pixels.samples)) ||
        !output.close()) {
        throw Failure(output.geterror());
    }
}

/// The image library does not report a strip that could not be written. The directory, which comes
/// after all strips, is missing then.
void checkTiff(const std::string& name) {
    const auto input = OIIO::ImageInput::create("tiff");
    ImageSpec ignored;
    if (!input || !input->open(name, ignored)) {
        throw Failure("the TIFF file cannot be written completely");
    }
}

std::vector<unsigned char> encodeWithLibrary(const Pixels& pixels, const Format& format,
                                             const ImageSpec& spec) {
    const SilencedErrors silenced;
    const auto output = ImageOutput::create(std::string(format.codecName));
    if (!output) {
        throw Failure(OIIO::geterror());
    }
    std::vector<unsigned char> bytes;
    if (format.codecName == "tiff") {
        const MemoryFile memory;
        writeTo(*output, memory.path().string(), spec, pixels);
        checkTiff(memory.path().string());
        bytes = memory.content();
    } else {
        OIIO::Filesystem::IOVecOutput memory(bytes);
        output->set_ioproxy(&memory);
        writeTo(*output, "memory", spec, pixels);
    }
    return bytes;
}

} // namespace

std::vector<unsigned char> encodePixels(const Pixels& pixels, const Format& format,
                                        const EncoderSettings& settings,
                                        const OIIO::ParamValueList& attributes) {
    checkSides(format, pixels.shape());
    if (format.codecName == "jpeg") {
        return encodeJpeg(pixels, settings, densityOf(attributes));
    }
    if (format.codecName == "webp") {
        return encodeWebp(pixels, settings);
    }
    if (format.codecName == "pnm") {
        return encodePnm(pixels);
    }
    return encodeWithLibrary(pixels, format, bareSpec(pixels, format, settings, attributes));
}

} // namespace velorn
