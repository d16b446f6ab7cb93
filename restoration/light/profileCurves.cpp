#include "restoration/light/profileCurves.h"

#include "restoration/failures/Failure.h"

#include <cmath>
#include <lcms2.h>
#include <limits>
#include <memory>
#include <new>
#include <string>

namespace restoration {
namespace {

struct DeleteContext {
    void operator()(cmsContext context) const noexcept { cmsDeleteContext(context); }
};
struct CloseProfile {
    void operator()(cmsHPROFILE profile) const noexcept { cmsCloseProfile(profile); }
};
using Context = std::unique_ptr<std::remove_pointer_t<cmsContext>, DeleteContext>;
using Profile = std::unique_ptr<void, CloseProfile>;

[[noreturn]] void refuse(const char* reason) {
    throw Failure(VELORN_STATUS_INVALID_ARGUMENT, std::string("settings->profile ") + reason);
}

ToneCurve curveOf(cmsHPROFILE profile, cmsTagSignature tag) {
    const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile, tag));
    if (curve == nullptr) {
        refuse("has no tone curves: use a profile made of a matrix and curves, or a grey one");
    }
    std::vector<double> light(ToneCurve::kPieces + 1);
    for (std::size_t i = 0; i < light.size(); ++i) {
        const float display = static_cast<float>(i) / static_cast<float>(ToneCurve::kPieces);
        light[i] = static_cast<double>(cmsEvalToneCurveFloat(curve, display));
        if (!std::isfinite(light[i])) {
            refuse("has a tone curve that is not finite");
        }
    }
    if (!(light.back() > light.front())) {
        refuse("has a tone curve that does not rise");
    }
    return ToneCurve(light);
}

} // namespace

ToneCurves profileCurves(std::span<const std::byte> profile) {
    // A context of its own: no global state, and no messages.
    const Context context(cmsCreateContext(nullptr, nullptr));
    if (!context) {
        throw std::bad_alloc();
    }
    if (profile.size() > std::numeric_limits<cmsUInt32Number>::max()) {
        refuse("is not an ICC profile");
    }
    const Profile opened(cmsOpenProfileFromMemTHR(context.get(), profile.data(),
                                                  static_cast<cmsUInt32Number>(profile.size())));
    if (!opened) {
        refuse("is not an ICC profile");
    }
    std::vector<ToneCurve> curves;
    switch (cmsGetColorSpace(opened.get())) {
    case cmsSigGrayData:
        curves.push_back(curveOf(opened.get(), cmsSigGrayTRCTag));
        break;
    case cmsSigRgbData:
        for (const cmsTagSignature tag : {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag}) {
            curves.push_back(curveOf(opened.get(), tag));
        }
        break;
    default:
        refuse("is neither for grey pictures nor for red, green and blue");
    }
    return ToneCurves(std::move(curves));
}

} // namespace restoration
