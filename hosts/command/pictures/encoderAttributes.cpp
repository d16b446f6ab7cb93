#include "hosts/command/pictures/encoderAttributes.h"

#include <algorithm>
#include <array>

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
    constexpr std::array<const char*, 6> kNames{"oiio:UnassociatedAlpha", "XResolution",
                                                "YResolution", "ResolutionUnit",
                                                "PixelAspectRatio", "compression"};
    return isIn(kNames, name);
}

/// Whether `attribute` of a PNG file is one of its texts.
bool isText(const OIIO::ParamValue& attribute) {
    const std::string name = attribute.name().string();
    constexpr std::array<const char*, 2> kWritten{"ImageDescription", "XML:com.adobe.xmp"};
    return attribute.type() == OIIO::TypeDesc::STRING && name.find("oiio:") != 0 &&
           name.find("Raw profile") != 0 && name.find("ICCProfile") != 0 && !isIn(kWritten, name);
}

bool isCarried(const OIIO::ParamValue& attribute, const std::string& sourceFormat,
               const std::string& format) {
    if (isAlwaysNeeded(attribute.name().string())) {
        return true;
    }
    if (sourceFormat != format) {
        return false;
    }
    return hasMetadataBlocks(format) ? format == "png" && isText(attribute) : true;
}

} // namespace

OIIO::ParamValueList encoderAttributes(const OIIO::ParamValueList& source,
                                       const std::string& sourceFormat, const std::string& format,
                                       const PictureMetadata& metadata) {
    OIIO::ParamValueList carried;
    std::ranges::copy_if(source, std::back_inserter(carried), [&](const auto& attribute) {
        return isCarried(attribute, sourceFormat, format);
    });
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
    if (horizontal > 0.0f && vertical > 0.0f && (unit == "in" || unit == "cm")) {
        metadata.setResolution(horizontal, vertical, unit == "cm" ? 3 : 2);
    }
}

} // namespace velorn
