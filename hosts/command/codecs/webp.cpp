#include "hosts/command/codecs/webp.h"

#include "hosts/command/terminal/Failure.h"

#include <new>
#include <webp/decode.h>
#include <webp/encode.h>

namespace velorn {
namespace {

/// Effort of the encoder, 0..6 in lossy and 0..9 in lossless files. The next higher efforts take
/// longer than the restoration of the picture; they save 3 % in lossy, 14 % in lossless files.
constexpr int kLossyMethod = 0;
constexpr int kLosslessEffort = 0;

WebPConfig configOf(const EncoderSettings& settings) {
    WebPConfig config;
    WebPConfigInit(&config);
    if (settings.isLossless) {
        WebPConfigLosslessPreset(&config, kLosslessEffort);
        config.exact = 1;
    } else {
        config.quality = static_cast<float>(settings.quality);
        config.method = kLossyMethod;
        // Halves the error at coloured edges and doubles the time.
        config.use_sharp_yuv = settings.quality > EncoderSettings::kDefaultQuality ? 1 : 0;
    }
    config.thread_level = 1;
    return config;
}

/// Frees the encoder's objects at the end.
struct Encoding {
    WebPPicture picture;
    WebPMemoryWriter writer;

    Encoding() {
        WebPPictureInit(&picture);
        WebPMemoryWriterInit(&writer);
        picture.writer = WebPMemoryWrite;
        picture.custom_ptr = &writer;
    }
    ~Encoding() {
        WebPPictureFree(&picture);
        WebPMemoryWriterClear(&writer);
    }
    Encoding(const Encoding&) = delete;
    Encoding& operator=(const Encoding&) = delete;
};

void check(bool isDone, const WebPPicture& picture) {
    if (isDone) {
        return;
    }
    if (picture.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY ||
        picture.error_code == VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY) {
        throw std::bad_alloc();
    }
    throw Failure("the WebP encoder fails with error " + std::to_string(picture.error_code));
}

} // namespace

std::optional<WebpHeader> readWebpHeader(std::span<const unsigned char> file) {
    WebPBitstreamFeatures features;
    if (WebPGetFeatures(file.data(), file.size(), &features) != VP8_STATUS_OK) {
        return std::nullopt;
    }
    return WebpHeader{features.width, features.height, features.has_alpha != 0,
                      features.has_animation != 0, features.format == 2};
}

Pixels decodeWebp(std::span<const unsigned char> file, const WebpHeader& header) {
    Pixels pixels = blackPixels({header.width, header.height, header.hasAlpha ? 4 : 3, 8});
    auto& samples = std::get<0>(pixels.samples);
    const auto decode = header.hasAlpha ? WebPDecodeRGBAInto : WebPDecodeRGBInto;
    if (decode(file.data(), file.size(), samples.data(), samples.size(),
               header.width * pixels.channels) == nullptr) {
        throw Failure("the file is damaged");
    }
    return pixels;
}

std::vector<unsigned char> encodeWebp(const Pixels& pixels, const EncoderSettings& settings) {
    const WebPConfig config = configOf(settings);
    Encoding encoding;
    WebPPicture& picture = encoding.picture;
    picture.width = pixels.width;
    picture.height = pixels.height;
    picture.use_argb = settings.isLossless || config.use_sharp_yuv != 0 ? 1 : 0;
    const auto import = pixels.channels == 4 ? WebPPictureImportRGBA : WebPPictureImportRGB;
    const auto* samples = std::get<0>(pixels.samples).data();
    check(import(&picture, samples, pixels.width * pixels.channels) != 0, picture);
    check(WebPEncode(&config, &picture) != 0, picture);
    return {encoding.writer.mem, encoding.writer.mem + encoding.writer.size};
}

} // namespace velorn
