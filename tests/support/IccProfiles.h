#pragma once

#include "velorncore10.h"

#include <cstdint>
#include <lcms2.h>
#include <memory>
#include <string>
#include <vector>

/// ICC profiles as blocks of memory, created by the colour library.
namespace vel::test {

using ProfileBytes = std::vector<std::uint8_t>;
using OpenProfile = std::unique_ptr<void, int (*)(void*)>;
using OpenTransform = std::unique_ptr<void, void (*)(void*)>;
using ToneCurve = std::unique_ptr<cmsToneCurve, void (*)(cmsToneCurve*)>;

inline ProfileBytes bytesOf(OpenProfile profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile.get(), nullptr, &size);
    ProfileBytes bytes(size);
    cmsSaveProfileToMem(profile.get(), bytes.data(), &size);
    return bytes;
}

inline ToneCurve gammaCurve(double gamma) {
    return {cmsBuildGamma(nullptr, gamma), cmsFreeToneCurve};
}

inline ProfileBytes srgbProfile() {
    return bytesOf({cmsCreate_sRGBProfile(), cmsCloseProfile});
}

/// Primaries with a wider gamut than sRGB, and a power function as tone curve.
inline ProfileBytes wideGamutProfile() {
    const cmsCIExyY white{0.3127, 0.3290, 1.0};
    const cmsCIExyYTRIPLE primaries{{0.64, 0.33, 1.0}, {0.21, 0.71, 1.0}, {0.15, 0.06, 1.0}};
    const ToneCurve gamma = gammaCurve(2.2);
    cmsToneCurve* const curves[3] = {gamma.get(), gamma.get(), gamma.get()};
    return bytesOf({cmsCreateRGBProfile(&white, &primaries, curves), cmsCloseProfile});
}

inline ProfileBytes greyProfile() {
    return bytesOf({cmsCreateGrayProfile(cmsD50_xyY(), gammaCurve(2.2).get()), cmsCloseProfile});
}

inline ProfileBytes labProfile() {
    return bytesOf({cmsCreateLab4Profile(nullptr), cmsCloseProfile});
}

inline ProfileBytes cmykLinkProfile() {
    return bytesOf({cmsCreateInkLimitingDeviceLink(cmsSigCmykData, 200.0), cmsCloseProfile});
}

inline ProfileBytes garbageProfile() {
    const std::string text = "this is no profile, and it is longer than the header of one: ";
    ProfileBytes bytes;
    for (int i = 0; i < 10; ++i) {
        bytes.insert(bytes.end(), text.begin(), text.end());
    }
    return bytes;
}

/// Colours of three elements of `format`, converted from one profile to another. An empty profile
/// means sRGB.
template <class Element>
std::vector<Element> transformed(const ProfileBytes& source, const ProfileBytes& target,
                                 cmsUInt32Number format, const std::vector<Element>& colours) {
    const auto open = [](const ProfileBytes& bytes) {
        return OpenProfile(
            bytes.empty()
                ? cmsCreate_sRGBProfile()
                : cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())),
            cmsCloseProfile);
    };
    const OpenProfile from = open(source);
    const OpenProfile to = open(target);
    const OpenTransform transform(
        cmsCreateTransform(from.get(), format, to.get(), format, INTENT_RELATIVE_COLORIMETRIC, 0),
        cmsDeleteTransform);
    std::vector<Element> result(colours.size());
    cmsDoTransform(transform.get(), colours.data(), result.data(),
                   static_cast<cmsUInt32Number>(colours.size() / 3));
    return result;
}

/// The record of two profiles; an empty one is a null pointer.
inline PSProfilesRecord profilesRecord(const ProfileBytes& in, const ProfileBytes& out) {
    const auto pointer = [](const ProfileBytes& bytes) {
        return bytes.empty() ? nullptr : bytes.data();
    };
    return {pointer(in), static_cast<std::int32_t>(in.size()), pointer(out),
            static_cast<std::int32_t>(out.size())};
}

} // namespace vel::test
