#include "hosts/command/pixels/inks.h"

#include "hosts/command/terminal/Failure.h"

#include <lcms2.h>
#include <memory>

namespace velorn {
namespace {

using Profile = std::unique_ptr<void, decltype(&cmsCloseProfile)>;
using Transform = std::unique_ptr<void, decltype(&cmsDeleteTransform)>;

Transform transformOf(std::span<const unsigned char> bytes, int bits) {
    const Profile inks(
        cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())),
        &cmsCloseProfile);
    const Profile rgb(cmsCreate_sRGBProfile(), &cmsCloseProfile);
    Transform transform(nullptr, &cmsDeleteTransform);
    if (inks && rgb && cmsGetColorSpace(inks.get()) == cmsSigCmykData) {
        transform.reset(cmsCreateTransform(inks.get(), bits == 8 ? TYPE_CMYK_8 : TYPE_CMYK_16,
                                           rgb.get(), bits == 8 ? TYPE_RGB_8 : TYPE_RGB_16,
                                           INTENT_RELATIVE_COLORIMETRIC,
                                           cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOCACHE));
    }
    if (!transform) {
        throw Failure("has a colour profile that does not describe CMYK inks; convert it to RGB "
                      "first");
    }
    return transform;
}

} // namespace

Pixels rgbOfInks(const Samples& inks, int width, int height,
                 std::span<const unsigned char> profile) {
    const int bits = inks.index() == 0 ? 8 : 16;
    const Transform transform = transformOf(profile, bits);
    Pixels pixels = blackPixels({width, height, 3, bits});
    std::visit(
        [&]<class T>(const std::vector<T>& from) {
            auto& to = std::get<std::vector<T>>(pixels.samples);
            const auto row = static_cast<std::size_t>(width);
            for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
                cmsDoTransform(transform.get(), &from[4 * row * y], &to[3 * row * y],
                               static_cast<cmsUInt32Number>(width));
            }
        },
        inks);
    return pixels;
}

} // namespace velorn
