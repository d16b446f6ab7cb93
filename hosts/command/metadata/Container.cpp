#include "hosts/command/metadata/Container.h"

#include <algorithm>
#include <string_view>

namespace velorn {
namespace {

bool hasAt(std::span<const unsigned char> file, std::size_t at, std::string_view text) {
    return file.size() >= at + text.size() &&
           std::equal(text.begin(), text.end(), file.begin() + static_cast<std::ptrdiff_t>(at),
                      [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; });
}

} // namespace

Container containerOf(std::span<const unsigned char> file) {
    using namespace std::string_view_literals;
    if (hasAt(file, 0, "\xFF\xD8\xFF"sv)) {
        return Container::Jpeg;
    }
    if (hasAt(file, 0, "\x89PNG\r\n\x1A\n"sv)) {
        return Container::Png;
    }
    if (hasAt(file, 0, "II*\0"sv) || hasAt(file, 0, "MM\0*"sv)) {
        return Container::Tiff;
    }
    if (hasAt(file, 0, "RIFF"sv) && hasAt(file, 8, "WEBP"sv)) {
        return Container::Webp;
    }
    return hasAt(file, 4, "ftyp"sv) ? Container::Heif : Container::Other;
}

} // namespace velorn
