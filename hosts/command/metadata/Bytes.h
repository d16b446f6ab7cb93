#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace velorn {

/// A view of a file's bytes. The functions below do not check that `at` is inside.
using Bytes = std::span<const unsigned char>;

inline std::uint16_t bigEndian16(Bytes bytes, std::size_t at) {
    return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}

inline std::uint32_t bigEndian32(Bytes bytes, std::size_t at) {
    return std::uint32_t{bigEndian16(bytes, at)} << 16 | bigEndian16(bytes, at + 2);
}

inline std::uint32_t littleEndian32(Bytes bytes, std::size_t at) {
    return std::uint32_t{bytes[at]} | std::uint32_t{bytes[at + 1]} << 8 |
           std::uint32_t{bytes[at + 2]} << 16 | std::uint32_t{bytes[at + 3]} << 24;
}

inline std::string textOf(Bytes bytes) {
    return {bytes.begin(), bytes.end()};
}

inline Bytes bytesOf(const std::string& text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

inline bool startsWith(Bytes bytes, const std::string& prefix) {
    return bytes.size() >= prefix.size() && textOf(bytes.first(prefix.size())) == prefix;
}

/// The last `count` bytes of `value`, most significant first.
inline std::string bigEndianText(std::uint32_t value, int count) {
    std::string text;
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) {
        text += static_cast<char>(value >> shift & 0xFFu);
    }
    return text;
}

/// The first `count` bytes of `value`, least significant first.
inline std::string littleEndianText(std::uint32_t value, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += static_cast<char>(value >> (8 * i) & 0xFFu);
    }
    return text;
}

} // namespace velorn
