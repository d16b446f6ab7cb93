#include "hosts/command/codecs/encodeJpeg.h"

#include "hosts/command/codecs/JpegFailure.h"
#include "hosts/command/terminal/Failure.h"

#include <cstdlib>
#include <memory>

namespace velorn {
namespace {

/// Memory that libjpeg allocates and replaces while it writes.
struct Buffer {
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
};

void chooseSettings(jpeg_compress_struct& encoder, const EncoderSettings& settings,
                    const PixelDensity& density) {
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, settings.quality, TRUE);
    encoder.optimize_coding = TRUE;
    encoder.density_unit = static_cast<UINT8>(density.unit);
    encoder.X_density = static_cast<UINT16>(density.horizontal);
    encoder.Y_density = static_cast<UINT16>(density.vertical);
    if (encoder.num_components == 3) {
        encoder.comp_info[0].h_samp_factor = settings.subsampling == Subsampling::none ? 1 : 2;
        encoder.comp_info[0].v_samp_factor = settings.subsampling == Subsampling::quarter ? 2 : 1;
    }
}

/// Has no objects that need destruction, because errors jump out of it.
bool encode(JpegFailure& failure, const std::uint8_t* samples, const Pixels& pixels,
            const EncoderSettings& settings, const PixelDensity& density, Buffer& buffer) {
    jpeg_compress_struct encoder{};
    encoder.err = failure.handler();
    if (setjmp(failure.jump) != 0) {
        jpeg_destroy_compress(&encoder);
        return false;
    }
    jpeg_create_compress(&encoder);
    jpeg_mem_dest(&encoder, &buffer.bytes, &buffer.size);
    encoder.image_width = static_cast<JDIMENSION>(pixels.width);
    encoder.image_height = static_cast<JDIMENSION>(pixels.height);
    encoder.input_components = pixels.channels;
    encoder.in_color_space = pixels.channels == 1 ? JCS_GRAYSCALE : JCS_RGB;
    chooseSettings(encoder, settings, density);
    jpeg_start_compress(&encoder, TRUE);
    const std::size_t rowSize =
        static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.channels);
    while (encoder.next_scanline < encoder.image_height) {
        auto* row = const_cast<JSAMPROW>(samples + encoder.next_scanline * rowSize);
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
    return true;
}

} // namespace

std::vector<unsigned char> encodeJpeg(const Pixels& pixels, const EncoderSettings& settings,
                                      const PixelDensity& density) {
    JpegFailure failure;
    Buffer buffer;
    const bool isEncoded =
        encode(failure, std::get<0>(pixels.samples).data(), pixels, settings, density, buffer);
    const std::unique_ptr<unsigned char, decltype(&std::free)> owner(buffer.bytes, &std::free);
    if (!isEncoded) {
        throw Failure(failure.message);
    }
    return {buffer.bytes, buffer.bytes + buffer.size};
}

} // namespace velorn
