#include "hosts/command/terminal/errorLine.h"

#include "hosts/command/terminal/Failure.h"

#include <algorithm>
#include <string_view>

namespace velorn {
namespace {

constexpr bool isContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

/// The bytes of the character that `text` begins with; 0 when they are not UTF-8, or a control
/// character.
std::size_t printableBytes(std::string_view text) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byteAt(0);
    if (first < 0x80) {
        return first >= 0x20 && first != 0x7F ? 1 : 0;
    }
    const std::size_t count = first >= 0xC2 && first < 0xE0   ? 2
                              : first >= 0xE0 && first < 0xF0 ? 3
                              : first >= 0xF0 && first < 0xF5 ? 4
                                                              : 0;
    if (count == 0 || text.size() < count) {
        return 0;
    }
    for (std::size_t i = 1; i < count; ++i) {
        if (!isContinuation(byteAt(i))) {
            return 0;
        }
    }
    // U+0080 to U+009F are control characters, too.
    return first == 0xC2 && byteAt(1) < 0xA0 ? 0 : count;
}

/// The position of the character numbered `index`; the end of `text` beyond its last character.
std::size_t positionOf(const std::string& text, std::size_t index) {
    std::size_t at = 0;
    for (; at < text.size(); ++at) {
        if (!isContinuation(static_cast<unsigned char>(text[at])) && index-- == 0) {
            break;
        }
    }
    return at;
}

} // namespace

std::string printable(const std::string& text) {
    std::string clean;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t count = printableBytes(std::string_view(text).substr(at));
        clean.append(count > 0 ? text.substr(at, count) : "?");
        at += std::max<std::size_t>(count, 1);
    }
    return clean;
}

std::string shortened(const std::string& text, std::size_t limit) {
    const auto count = static_cast<std::size_t>(std::ranges::count_if(
        text, [](char c) { return !isContinuation(static_cast<unsigned char>(c)); }));
    if (count <= limit) {
        return text;
    }
    const std::size_t kept = limit - 3;
    const std::size_t tail = kept / 2;
    return text.substr(0, positionOf(text, kept - tail)) + "..." +
           text.substr(positionOf(text, count - tail));
}

std::string quotedWord(const std::string& word) {
    constexpr std::size_t kLongestWord = 80;
    return std::string("'").append(shortened(printable(word), kLongestWord)).append("'");
}

std::string errorLine(const std::string& text) {
    return shortened("velorn: " + printable(onOneLine(text)), kLongestErrorLine);
}

} // namespace velorn
