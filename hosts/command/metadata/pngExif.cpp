#include "hosts/command/metadata/pngExif.h"

#include <algorithm>
#include <array>
#include <exiv2/basicio.hpp>
#include <exiv2/tiffimage.hpp>
#include <zlib.h>

namespace velorn {
namespace {

/// The signature and the header, which always comes first.
constexpr std::ptrdiff_t kHeaderEnd = 8 + 25;

void append(std::vector<unsigned char>& chunk, std::uint32_t value) {
    std::array<Exiv2::byte, 4> bytes{};
    Exiv2::ul2Data(bytes.data(), value, Exiv2::bigEndian);
    chunk.insert(chunk.end(), bytes.begin(), bytes.end());
}

} // namespace

std::vector<unsigned char> withPngExif(std::vector<unsigned char> file, const Exiv2::ExifData& exif,
                                       Exiv2::ByteOrder order) {
    // Unlike the encoder for JPEG, this one has no limit of 64 KiB.
    Exiv2::MemIo block;
    Exiv2::TiffParser::encode(block, nullptr, 0, order, exif, Exiv2::IptcData(), Exiv2::XmpData());
    const Exiv2::byte* bytes = block.mmap();
    const auto size = static_cast<std::uint32_t>(block.size());

    std::vector<unsigned char> chunk;
    append(chunk, size);
    for (const char letter : {'e', 'X', 'I', 'f'}) {
        chunk.push_back(static_cast<unsigned char>(letter));
    }
    chunk.insert(chunk.end(), bytes, bytes + size);
    append(chunk, static_cast<std::uint32_t>(crc32(0, chunk.data() + 4, size + 4)));
    file.insert(file.begin() + kHeaderEnd, chunk.begin(), chunk.end());
    return file;
}

} // namespace velorn
