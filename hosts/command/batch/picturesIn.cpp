#include "hosts/command/batch/picturesIn.h"

#include "hosts/command/files/fileFailures.h"

#include <algorithm>
#include <array>
#include <string>

namespace velorn {
namespace {

namespace fs = std::filesystem;

bool hasPictureExtension(const fs::path& path) {
    static const std::array<std::string, 22> extensions{
        ".jpg",  ".jpeg", ".jpe",  ".jfif", ".png", ".tif", ".tiff", ".webp",
        ".ppm",  ".pgm",  ".pnm",  ".bmp",  ".tga", ".exr", ".hdr",  ".gif",
        ".heic", ".heif", ".avif", ".jp2",  ".sgi", ".dpx"};
    std::string extension = path.extension().string();
    std::ranges::transform(extension, extension.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return std::ranges::find(extensions, extension) != extensions.end();
}

bool isPicture(const fs::directory_entry& entry) {
    std::error_code ignored;
    return !entry.path().filename().string().starts_with('.') &&
           hasPictureExtension(entry.path()) && entry.is_regular_file(ignored);
}

} // namespace

std::vector<fs::path> picturesIn(const fs::path& folder) {
    std::error_code error;
    std::vector<fs::path> pictures;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (isPicture(*entry)) {
            pictures.push_back(entry->path());
        }
    }
    if (error) {
        throw cannotRead(folder, error.message());
    }
    if (pictures.empty()) {
        throw cannotRead(folder, "the folder has no pictures");
    }
    std::ranges::sort(pictures);
    return pictures;
}

} // namespace velorn
