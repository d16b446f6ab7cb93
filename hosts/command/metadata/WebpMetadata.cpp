#include "hosts/command/metadata/WebpMetadata.h"

#include <functional>

namespace velorn {
namespace {

constexpr std::size_t kFileHeader = 12;
constexpr std::size_t kChunkHeader = 8;

// Flags in the first byte of the extended header.
constexpr unsigned kHasProfile = 0x20;
constexpr unsigned kHasAlpha = 0x10;
constexpr unsigned kHasExif = 0x08;
constexpr unsigned kHasXmp = 0x04;

/// Some writers put the prefix of the JPEG segment before the EXIF structure.
const std::string kExifPrefix("Exif\0\0", 6);

struct Chunk {
    std::string type;
    Bytes body;
};

void forEachChunk(Bytes file, const std::function<void(const Chunk&)>& visit) {
    std::size_t at = kFileHeader;
    while (at + kChunkHeader <= file.size()) {
        const std::size_t length = littleEndian32(file, at + 4);
        if (length > file.size() - at - kChunkHeader) {
            break;
        }
        visit({textOf(file.subspan(at, 4)), file.subspan(at + kChunkHeader, length)});
        at += kChunkHeader + length + length % 2;
    }
}

std::string chunkText(const std::string& type, const std::string& body) {
    return type + littleEndianText(static_cast<std::uint32_t>(body.size()), 4) + body +
           std::string(body.size() % 2, '\0');
}

/// The fields of the extended header that describe the picture, read from its bitstream.
struct Canvas {
    unsigned alpha = 0;
    std::uint32_t widthLessOne = 0;
    std::uint32_t heightLessOne = 0;

    void learnFrom(const Chunk& chunk) {
        if (chunk.type == "VP8X" && chunk.body.size() >= 10) {
            alpha = chunk.body[0] & kHasAlpha;
            widthLessOne = littleEndian32(chunk.body, 4) & 0xFFFFFFu;
            heightLessOne = littleEndian32(chunk.body, 6) >> 8;
        } else if (chunk.type == "VP8L" && chunk.body.size() >= 5) {
            const std::uint32_t bits = littleEndian32(chunk.body, 1);
            widthLessOne = bits & 0x3FFFu;
            heightLessOne = bits >> 14 & 0x3FFFu;
            alpha |= (bits >> 28 & 1u) != 0 ? kHasAlpha : 0u;
        } else if (chunk.type == "VP8 " && chunk.body.size() >= 10) {
            const std::uint32_t sides = littleEndian32(chunk.body, 6);
            widthLessOne = (sides & 0x3FFFu) - 1;
            heightLessOne = (sides >> 16 & 0x3FFFu) - 1;
        }
    }
};

bool isMetadata(const std::string& type) {
    return type == "VP8X" || type == "ICCP" || type == "EXIF" || type == "XMP ";
}

} // namespace

bool isWebp(Bytes file) {
    return file.size() >= kFileHeader && startsWith(file, "RIFF") &&
           startsWith(file.subspan(8), "WEBP");
}

MetadataBlocks readWebpMetadata(Bytes file) {
    MetadataBlocks blocks;
    forEachChunk(file, [&](const Chunk& chunk) {
        if (chunk.type == "ICCP") {
            blocks.icc = textOf(chunk.body);
        } else if (chunk.type == "EXIF") {
            const bool prefixed = startsWith(chunk.body, kExifPrefix);
            blocks.exif = textOf(chunk.body.subspan(prefixed ? kExifPrefix.size() : 0));
        } else if (chunk.type == "XMP ") {
            blocks.xmp = textOf(chunk.body);
        }
    });
    return blocks;
}

std::vector<unsigned char> withWebpMetadata(Bytes file, const MetadataBlocks& blocks) {
    if (blocks.icc.empty() && blocks.exif.empty() && blocks.xmp.empty()) {
        return {file.begin(), file.end()};
    }
    Canvas canvas;
    std::string picture;
    forEachChunk(file, [&](const Chunk& chunk) {
        canvas.learnFrom(chunk);
        if (!isMetadata(chunk.type)) {
            picture += chunkText(chunk.type, textOf(chunk.body));
        }
    });
    const unsigned flags = canvas.alpha | (blocks.icc.empty() ? 0u : kHasProfile) |
                           (blocks.exif.empty() ? 0u : kHasExif) |
                           (blocks.xmp.empty() ? 0u : kHasXmp);
    std::string body = "WEBP";
    body +=
        chunkText("VP8X", littleEndianText(flags, 4) + littleEndianText(canvas.widthLessOne, 3) +
                              littleEndianText(canvas.heightLessOne, 3));
    body += blocks.icc.empty() ? "" : chunkText("ICCP", blocks.icc);
    body += picture;
    body += blocks.exif.empty() ? "" : chunkText("EXIF", blocks.exif);
    body += blocks.xmp.empty() ? "" : chunkText("XMP ", blocks.xmp);
    const std::string whole = chunkText("RIFF", body);
    return {whole.begin(), whole.end()};
}

} // namespace velorn
