#include "hosts/command/metadata/PngMetadata.h"

#include <algorithm>
#include <array>
#include <functional>

namespace velorn {
namespace {

const std::string kSignature("\x89PNG\r\n\x1A\n", 8);
/// Keyword, then: not compressed, method 0, no language, no translated keyword.
const std::string kXmpPrefix("XML:com.adobe.xmp\0\0\0\0\0", 22);
const std::string kExifType = "eXIf";
const std::string kTextType = "iTXt";
constexpr std::size_t kChunkFrame = 12; // length, type and check sum

struct Chunk {
    std::string type;
    Bytes whole;
    Bytes body;

    bool isXmp() const { return type == kTextType && startsWith(body, kXmpPrefix); }
    bool isExif() const { return type == kExifType; }
};

/// Visits the chunks. Returns the position of the first byte after them.
std::size_t forEachChunk(Bytes file, const std::function<void(const Chunk&)>& visit) {
    std::size_t at = kSignature.size();
    while (file.size() - at >= kChunkFrame) {
        const std::size_t length = bigEndian32(file, at);
        if (length > file.size() - at - kChunkFrame) {
            break;
        }
        visit({textOf(file.subspan(at + 4, 4)), file.subspan(at, length + kChunkFrame),
               file.subspan(at + 8, length)});
        at += length + kChunkFrame;
    }
    return at;
}

bool isOpaqueKind(const Chunk& chunk) {
    static const std::array<std::string, 9> kinds{"tEXt", "zTXt", kTextType, "tIME", "pHYs",
                                                  "gAMA", "cHRM", "sRGB",    "iCCP"};
    return !chunk.isXmp() && std::ranges::find(kinds, chunk.type) != kinds.end();
}

/// The check sum of a chunk's type and body: CRC-32 with the polynomial of the PNG standard.
std::uint32_t checkSum(const std::string& text) {
    std::uint32_t sum = 0xFFFFFFFFu;
    for (const unsigned char byte : bytesOf(text)) {
        sum ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum >> 1) ^ ((sum & 1u) != 0 ? 0xEDB88320u : 0u);
        }
    }
    return ~sum;
}

std::string chunkText(const std::string& type, const std::string& body) {
    return bigEndianText(static_cast<std::uint32_t>(body.size()), 4) + type + body +
           bigEndianText(checkSum(type + body), 4);
}

bool isReplaced(const Chunk& own, const MetadataBlocks& blocks) {
    if (own.isExif()) {
        return !blocks.exif.empty();
    }
    if (own.isXmp()) {
        return !blocks.xmp.empty();
    }
    return isOpaqueKind(own) && !blocks.pngChunks.empty();
}

} // namespace

bool isPng(Bytes file) {
    return startsWith(file, kSignature);
}

MetadataBlocks readPngMetadata(Bytes file) {
    MetadataBlocks blocks;
    forEachChunk(file, [&](const Chunk& chunk) {
        if (chunk.isExif()) {
            blocks.exif = textOf(chunk.body);
        } else if (chunk.isXmp()) {
            blocks.xmp = textOf(chunk.body.subspan(kXmpPrefix.size()));
        } else if (isOpaqueKind(chunk)) {
            blocks.pngChunks.push_back(textOf(chunk.whole));
        }
    });
    return blocks;
}

std::vector<unsigned char> withPngMetadata(Bytes file, const MetadataBlocks& blocks) {
    std::string carried;
    for (const std::string& chunk : blocks.pngChunks) {
        carried += chunk;
    }
    if (!blocks.exif.empty()) {
        carried += chunkText(kExifType, blocks.exif);
    }
    if (!blocks.xmp.empty()) {
        carried += chunkText(kTextType, kXmpPrefix + blocks.xmp);
    }
    std::vector<unsigned char> result(
        file.begin(), file.begin() + static_cast<std::ptrdiff_t>(kSignature.size()));
    const auto append = [&](Bytes part) { result.insert(result.end(), part.begin(), part.end()); };
    const std::size_t end = forEachChunk(file, [&](const Chunk& chunk) {
        if (!isReplaced(chunk, blocks)) {
            append(chunk.whole);
        }
        if (chunk.type == "IHDR") {
            append(bytesOf(carried));
        }
    });
    append(file.subspan(end));
    return result;
}

} // namespace velorn
