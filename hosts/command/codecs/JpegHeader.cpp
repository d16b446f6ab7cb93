#include "hosts/command/codecs/JpegHeader.h"

#include "hosts/command/codecs/JpegFailure.h"

#include <algorithm>
#include <cstdlib>

namespace velorn {
namespace {

/// Table K.1 of ITU-T T.81, for brightness.
constexpr QuantisationTable kBrightness{
    16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
    14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
    18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
    49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};

int entryAt(int quality, int base) {
    const int percent = quality < 50 ? 5000 / quality : 200 - 2 * quality;
    return std::clamp((base * percent + 50) / 100, 1, 255);
}

Subsampling subsamplingOf(const jpeg_decompress_struct& decoder) {
    if (decoder.num_components != 3 || decoder.jpeg_color_space != JCS_YCbCr) {
        return Subsampling::none;
    }
    const auto& brightness = decoder.comp_info[0];
    const auto& colour = decoder.comp_info[1];
    if (brightness.h_samp_factor <= colour.h_samp_factor) {
        return Subsampling::none;
    }
    return brightness.v_samp_factor > colour.v_samp_factor ? Subsampling::quarter
                                                           : Subsampling::half;
}

/// Has no objects that need destruction, because errors jump out of it.
bool read(JpegFailure& failure, std::span<const unsigned char> file, JpegHeader& header,
          QuantisationTable& table) {
    jpeg_decompress_struct decoder{};
    decoder.err = failure.handler();
    if (setjmp(failure.jump) != 0) {
        jpeg_destroy_decompress(&decoder);
        return false;
    }
    jpeg_create_decompress(&decoder);
    jpeg_mem_src(&decoder, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&decoder, TRUE);
    header.isCmyk = decoder.jpeg_color_space == JCS_CMYK || decoder.jpeg_color_space == JCS_YCCK;
    header.subsampling = subsamplingOf(decoder);
    const JQUANT_TBL* stored = decoder.quant_tbl_ptrs[decoder.comp_info[0].quant_tbl_no];
    if (stored != nullptr) {
        std::copy_n(stored->quantval, table.size(), table.begin());
    }
    jpeg_destroy_decompress(&decoder);
    return stored != nullptr;
}

} // namespace

std::optional<JpegHeader> readJpegHeader(std::span<const unsigned char> file) {
    JpegFailure failure;
    JpegHeader header;
    QuantisationTable table{};
    if (file.empty() || !read(failure, file, header, table)) {
        return std::nullopt;
    }
    header.quality = estimatedQuality(table);
    return header;
}

int estimatedQuality(const QuantisationTable& table) {
    int best = 100;
    int least = -1;
    for (int quality = 100; quality >= 1; --quality) {
        int difference = 0;
        for (std::size_t i = 0; i < table.size(); ++i) {
            difference += std::abs(entryAt(quality, kBrightness[i]) - table[i]);
        }
        if (least < 0 || difference < least) {
            least = difference;
            best = quality;
        }
    }
    return best;
}

} // namespace velorn
