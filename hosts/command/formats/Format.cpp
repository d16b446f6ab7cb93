#include "hosts/command/formats/Format.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/formats/formatTexts.h"
#include "hosts/command/terminal/errorLine.h"
#include "hosts/command/terminal/suggestion.h"

#include <algorithm>

namespace velorn {
namespace {

bool hasExtension(const Format& format, std::string_view extension) {
    return !extension.empty() &&
           std::ranges::find(format.extensions, extension) != format.extensions.end();
}

template <class Predicate>
const Format* find(const Predicate& isWanted) {
    const auto found = std::ranges::find_if(kFormats, isWanted);
    return found == kFormats.end() ? nullptr : &*found;
}

std::string writtenFormats() {
    return "the formats that can be written are " + writtenFormatNames();
}

/// The extensions of the formats that are written, with their points.
std::vector<std::string> writtenExtensions() {
    std::vector<std::string> extensions;
    for (const Format& format : kFormats) {
        for (const std::string_view extension : format.extensions) {
            if (format.isWritten && !extension.empty()) {
                extensions.push_back(std::string(1, '.').append(extension));
            }
        }
    }
    return extensions;
}

/// Why the extension of `path` selects no format.
std::string unknownExtension(const std::filesystem::path& path) {
    const std::string extension = printable(path.extension().string());
    if (extension.size() < 2) {
        return "its name has no extension; add one (with --output-dir, by --name) or give "
               "--format; " +
               writtenFormats();
    }
    const std::string near = suggestion(lowerCase(extension), writtenExtensions());
    return "no picture format has the extension '" + shortened(extension, 20) + "'" +
           (near.empty() ? "; " + writtenFormats() : near);
}

} // namespace

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

const Format* formatOfPath(const std::filesystem::path& path) {
    const std::string extension = lowerCase(path.extension().string());
    return find([&](const Format& format) {
        return extension.size() > 1 && hasExtension(format, std::string_view(extension).substr(1));
    });
}

const Format* formatNamed(std::string_view name) {
    const std::string lower = lowerCase(name);
    return find([&](const Format& format) {
        return lowerCase(format.name) == lower || hasExtension(format, lower);
    });
}

const Format* formatOfCodec(std::string_view codecName) {
    return find([&](const Format& format) { return format.codecName == codecName; });
}

const Format& outputFormatOfPath(const std::filesystem::path& path) {
    const Format* format = formatOfPath(path);
    if (format == nullptr) {
        throw cannotWrite(path, unknownExtension(path));
    }
    if (!format->isWritten) {
        throw cannotWrite(path, std::string(format->name) + " is only read; " + writtenFormats());
    }
    return *format;
}

const Format& outputFormatNamed(std::string_view name) {
    const Format* format = formatNamed(name);
    if (format == nullptr || !format->isWritten) {
        throw Failure("'" + std::string(name) + "' is not a format to write; " + writtenFormats());
    }
    return *format;
}

void checkSides(const Format& format, const PictureShape& shape) {
    if (std::max(shape.width, shape.height) > format.largestSide) {
        throw Failure(std::string(format.name) + " holds at most " +
                      std::to_string(format.largestSide) + " by " +
                      std::to_string(format.largestSide) + " pixels, and the picture has " +
                      std::to_string(shape.width) + " by " + std::to_string(shape.height));
    }
}

void checkBits(const Format& format, int bits) {
    if (bits > 8 && !format.holds(Room::sixteenBits)) {
        throw Failure(std::string(format.name) + " holds at most 8 bits per sample");
    }
}

PictureShape heldShape(const Format& format, const PictureShape& shape) {
    PictureShape held = shape;
    if (!format.holds(Room::sixteenBits)) {
        held.bits = 8;
    }
    const bool isGrey = shape.channels < 3;
    const bool keepsAlpha = shape.hasAlpha() && format.holds(Room::alpha);
    const bool keepsGrey =
        isGrey && (keepsAlpha ? format.holds(Room::greyAlpha) : format.holds(Room::grey));
    held.channels = (keepsGrey ? 1 : 3) + (keepsAlpha ? 1 : 0);
    return held;
}

std::vector<std::string> lossesOf(const Format& format, const PictureShape& shape) {
    const PictureShape held = heldShape(format, shape);
    std::vector<std::string> losses;
    if (shape.hasAlpha() && !held.hasAlpha()) {
        losses.emplace_back("the alpha channel");
    }
    if (held.bits < shape.bits) {
        losses.emplace_back("16 bits per sample (8 are kept)");
    }
    return losses;
}

} // namespace velorn
