#include "hosts/command/formats/formatTexts.h"

#include "hosts/command/formats/Format.h"

#include <algorithm>
#include <vector>

namespace velorn {
namespace {

std::vector<std::string> extensionsOf(const Format& format) {
    std::vector<std::string> extensions;
    for (const std::string_view extension : format.extensions) {
        if (!extension.empty()) {
            extensions.push_back(std::string(1, '.').append(extension));
        }
    }
    return extensions;
}

std::string joined(const std::vector<std::string>& words, const std::string& separator) {
    std::string text;
    for (const std::string& word : words) {
        text.append(text.empty() ? "" : separator).append(word);
    }
    return text;
}

std::string withExtensions(const Format& format) {
    return std::string(format.name) + " (" + joined(extensionsOf(format), " ") + ")";
}

template <class Describe>
std::string listOf(bool isWritten, const Describe& describe) {
    std::vector<std::string> names;
    for (const Format& format : kFormats) {
        if (format.isWritten == isWritten) {
            names.push_back(describe(format));
        }
    }
    return enumeration(names);
}

std::string depthsOf(const Format& format) {
    if (format.isLinear) {
        return "linear light";
    }
    return format.holds(Room::sixteenBits) ? "8 or 16 bits" : "8 bits";
}

std::string channelsOf(const Format& format) {
    std::vector<std::string> channels;
    if (format.holds(Room::grey)) {
        channels.emplace_back("grey");
    }
    if (format.holds(Room::greyAlpha)) {
        channels.emplace_back("grey with alpha");
    }
    channels.emplace_back("RGB");
    if (format.holds(Room::alpha)) {
        channels.emplace_back("RGB with alpha");
    }
    return joined(channels, ", ");
}

std::string sidesOf(const Format& format) {
    return format.largestSide == kUnlimited ? "any"
                                            : "at most " + std::to_string(format.largestSide);
}

std::string codingOf(const Format& format) {
    switch (format.coding) {
    case Coding::lossless:
        return "lossless";
    case Coding::lossy:
        return "lossy";
    case Coding::both:
        break;
    }
    return "lossy or lossless";
}

std::string metadataOf(const Format& format) {
    std::vector<std::string> kinds;
    const auto add = [&](bool isHeld, const char* kind) {
        if (isHeld) {
            kinds.emplace_back(kind);
        }
    };
    add(format.holds(Room::orientation), "orientation");
    add(format.holds(Room::profile), "profile");
    add(format.holds(Room::exif), "EXIF");
    add(format.holds(Room::xmp), "XMP");
    add(format.holds(Room::iptc), "IPTC");
    add(format.holds(Room::comment), "comment");
    return kinds.empty() ? "none" : joined(kinds, ", ");
}

} // namespace

std::string enumeration(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool isLast = i + 1 == names.size();
        text.append(i == 0 ? "" : isLast ? " and " : ", ").append(names[i]);
    }
    return text;
}

std::string writtenFormatNames() {
    return listOf(true, [](const Format& format) { return std::string(format.name); });
}

std::string formatHelp() {
    return "Formats: " + listOf(true, withExtensions) +
           "; only read: " + listOf(false, withExtensions) + ".";
}

std::string formatManual() {
    std::string text;
    for (const Format& format : kFormats) {
        text.append(".TP\n.B ")
            .append(format.name)
            .append(format.isWritten ? "\n" : " (only read)\n");
        // A line that begins with a dot is a request, and is not printed.
        text.append("\\&").append(joined(extensionsOf(format), " ")).append("; ");
        text.append(depthsOf(format)).append("; ").append(channelsOf(format)).append("; sides ");
        text.append(sidesOf(format)).append("; ").append(codingOf(format)).append("; metadata: ");
        text.append(metadataOf(format)).append(".\n");
    }
    return text;
}

std::string formatTableMarkdown() {
    std::string text =
        "| format | extensions | use | samples | channels | sides in pixels | coding "
        "| metadata |\n|---|---|---|---|---|---|---|---|\n";
    for (const Format& format : kFormats) {
        const std::vector<std::string> cells{std::string(format.name),
                                             joined(extensionsOf(format), " "),
                                             format.isWritten ? "read, written" : "read",
                                             depthsOf(format),
                                             channelsOf(format),
                                             sidesOf(format),
                                             codingOf(format),
                                             metadataOf(format)};
        text.append("| ").append(joined(cells, " | ")).append(" |\n");
    }
    return text;
}

} // namespace velorn
