#include "hosts/command/codecs/decodeCmykJpeg.h"

#include "hosts/command/codecs/JpegFailure.h"
#include "hosts/command/terminal/Failure.h"

#include <algorithm>

namespace velorn {
namespace {

struct Reading {
    JpegFailure failure;
    jpeg_decompress_struct decoder{};
};

// The functions have no objects that need destruction, because errors jump out of them.

bool start(Reading& reading, std::span<const unsigned char> file) {
    reading.decoder.err = reading.failure.handler();
    if (setjmp(reading.failure.jump) != 0) {
        return false;
    }
    jpeg_create_decompress(&reading.decoder);
    jpeg_mem_src(&reading.decoder, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&reading.decoder, TRUE);
    reading.decoder.out_color_space = JCS_CMYK;
    jpeg_start_decompress(&reading.decoder);
    return true;
}

bool finish(Reading& reading, std::uint8_t* samples) {
    if (setjmp(reading.failure.jump) != 0) {
        return false;
    }
    const std::size_t rowSize = std::size_t{4} * reading.decoder.output_width;
    while (reading.decoder.output_scanline < reading.decoder.output_height) {
        JSAMPROW row = samples + reading.decoder.output_scanline * rowSize;
        jpeg_read_scanlines(&reading.decoder, &row, 1);
    }
    jpeg_finish_decompress(&reading.decoder);
    // A truncated file is a warning to the decoder, which fills the rest with grey.
    if (reading.decoder.err->num_warnings > 0) {
        reading.decoder.err->format_message(reinterpret_cast<j_common_ptr>(&reading.decoder),
                                            reading.failure.message);
        return false;
    }
    return true;
}

} // namespace

std::vector<std::uint8_t> decodeCmykJpeg(std::span<const unsigned char> file) {
    Reading reading;
    struct Closing {
        jpeg_decompress_struct& decoder;
        ~Closing() { jpeg_destroy_decompress(&decoder); }
    } const closing{reading.decoder};
    std::vector<std::uint8_t> samples;
    bool isRead = start(reading, file);
    if (isRead) {
        samples.resize(std::size_t{4} * reading.decoder.output_width *
                       reading.decoder.output_height);
        isRead = finish(reading, samples.data());
    }
    if (!isRead) {
        throw Failure(reading.failure.message);
    }
    if (reading.decoder.saw_Adobe_marker) {
        // Files with this marker store 255 for no ink.
        std::ranges::transform(samples, samples.begin(), [](std::uint8_t sample) {
            return static_cast<std::uint8_t>(255 - sample);
        });
    }
    return samples;
}

} // namespace velorn
