#include "hosts/command/pictures/encoderAttributes.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velorn {
namespace {

template <std::size_t N>
bool isIn(const std::array<const char*, N>& names, const std::string& name) {
    return std::ranges::find(names, name) != names.end();
}

bool hasMetadataBlocks(const std::string& format) {
    constexpr std::array<const char*, 4> kFormats{"jpeg", "png", "tiff", "webp"};
    return isIn(kFormats, format);
}

bool isAlwaysNeeded(const std::string& name) {
    constexpr std::array<const char*, 3> kNames{"oiio:UnassociatedAlpha", "PixelAspectRatio",
                                                "compression"};
    return isIn(kNames, name);
}

/// Whether `attribute` of a PNG file is one of its texts. The image library mixes them with what it
/// finds in EXIF and XMP.
bool isText(const OIIO::ParamValue& attribute, const PictureMetadata& metadata) {
    constexpr std::array<const char*, 6> kUnambiguous{"Creation Time", "Disclaimer", "Warning",
                                                      "Source",        "Comment",    "Title"};
    constexpr std::array<const char*, 2> kOther{"ImageDescription", "ResolutionUnit"};
    const std::string name = attribute.name().string();
    if (attribute.type() != OIIO::TypeDesc::STRING) {
        return false;
    }
    if (metadata.hasBlocks()) {
        return isIn(kUnambiguous, name);
    }
    return name.find(':') == std::string::npos && !isIn(kOther, name);
}

bool isCarried(const OIIO::ParamValue& attribute, const std::string& sourceFormat,
               const std::string& format, const PictureMetadata& metadata) {
    if (isAlwaysNeeded(attribute.name().string())) {
        return true;
    }
    if (sourceFormat != format) {
        return false;
    }
    return hasMetadataBlocks(format) ? format == "png" && isText(attribute, metadata) : true;
}

/// JPEG files state whole numbers.
Resolution wholeResolution(const Resolution& resolution) {
    const bool isWhole = std::round(resolution.horizontal) == resolution.horizontal;
    if (resolution.unit != Resolution::Unit::Centimetre || isWhole) {
        return {std::round(resolution.horizontal), std::round(resolution.vertical),
                resolution.unit};
    }
    return {std::round(resolution.horizontal * 2.54f), std::round(resolution.vertical * 2.54f),
            Resolution::Unit::Inch};
}

const char* nameOf(Resolution::Unit unit) {
    return unit == Resolution::Unit::Inch ? "in" : unit == Resolution::Unit::None ? "none" : "cm";
}

void attachResolution(const PictureMetadata& metadata, const std::string& format,
                      OIIO::ParamValueList& carried) {
    if (const auto found = metadata.resolution()) {
        const Resolution resolution = format == "jpeg" ? wholeResolution(*found) : *found;
        carried.attribute("XResolution", resolution.horizontal);
        carried.attribute("YResolution", resolution.vertical);
        carried.attribute("ResolutionUnit", nameOf(resolution.unit));
    }
}

} // namespace

OIIO::ParamValueList encoderAttributes(const OIIO::ParamValueList& source,
                                       const std::string& sourceFormat, const std::string& format,
                                       const PictureMetadata& metadata) {
    OIIO::ParamValueList carried;
    std::ranges::copy_if(source, std::back_inserter(carried), [&](const auto& attribute) {
        return isCarried(attribute, sourceFormat, format, metadata);
    });
    attachResolution(metadata, format, carried);
    const std::vector<unsigned char>& profile = metadata.profile();
    if (!profile.empty()) {
        carried.attribute("ICCProfile",
                          OIIO::TypeDesc(OIIO::TypeDesc::UINT8, static_cast<int>(profile.size())),
                          profile.data());
    }
    if (!hasMetadataBlocks(format)) {
        const std::string description = metadata.description();
        if (!description.empty()) {
            carried.attribute("ImageDescription", description);
        }
        if (metadata.orientation() != 1) {
            carried.attribute("Orientation", metadata.orientation());
        }
    }
    return carried;
}

void addResolution(const OIIO::ParamValueList& source, PictureMetadata& metadata) {
    const float horizontal = source.get_float("XResolution");
    const float vertical = source.get_float("YResolution", horizontal);
    const std::string unit{source.get_string("ResolutionUnit")};
    const bool isPerInch = unit == "in" || unit == "inch";
    if (horizontal > 0.0f && vertical > 0.0f && (isPerInch || unit == "cm")) {
        metadata.setResolution({horizontal, vertical,
                                isPerInch ? Resolution::Unit::Inch : Resolution::Unit::Centimetre});
    }
}

std::vector<std::string> textNames(const OIIO::ParamValueList& source,
                                   const PictureMetadata& metadata) {
    std::vector<std::string> names;
    for (const OIIO::ParamValue& attribute : source) {
        if (isText(attribute, metadata)) {
            names.push_back(attribute.name().string());
        }
    }
    return names;
}

} // namespace velorn
