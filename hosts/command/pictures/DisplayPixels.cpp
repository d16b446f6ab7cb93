#include "hosts/command/pictures/DisplayPixels.h"

#include "hosts/command/library/statusText.h"
#include "hosts/command/pictures/planeRecord.h"
#include "hosts/command/terminal/Failure.h"

#include <cmath>
#include <limits>
#include <string>

namespace velorn {
namespace {

/// The library's status when it refuses a profile and shows the colours unchanged.
constexpr std::int32_t kProfileRefused = 0;

template <class T>
std::int32_t asInt32(T value) {
    if (value > static_cast<T>(std::numeric_limits<std::int32_t>::max())) {
        throw Failure("the picture is too large for a display");
    }
    return static_cast<std::int32_t>(value);
}

PSProfilesRecord recordOf(const DisplayProfiles& profiles) {
    return {profiles.picture.data(), asInt32(profiles.picture.size()), profiles.display.data(),
            asInt32(profiles.display.size())};
}

/// The length of a displayed side. At scales near 1 the library copies pixel by pixel; at others it
/// resamples.
int sideAt(int side, float scale) {
    const double wide = scale;
    if (wide >= 0.99 && wide <= 1.01) {
        return side;
    }
    // The same tolerance for the rounding of the factor as in the library.
    return asInt32(std::floor(side * wide + 1e-7));
}

std::int32_t stepOf(const DisplayPixels& shown) {
    return asInt32(std::int64_t{4} * shown.width);
}

/// Fills `shown`, whose size is set, and returns the library's status.
std::int32_t show(const RgbPixels& pixels, const DisplayProfiles& profiles, float scale,
                  DisplayPixels& shown) {
    shown.bytes.resize(static_cast<std::size_t>(stepOf(shown)) *
                       static_cast<std::size_t>(shown.height));
    PlaneRecord image = planeRecord(pixels);
    PSProfilesRecord colours = recordOf(profiles);
    return PSImageICC2QImage(&colours, &image, shown.bytes.data(), stepOf(shown), shown.width,
                             shown.height, scale);
}

bool isAccepted(const DisplayProfiles& profiles) {
    const RgbPixels dot{1, 1, std::vector<std::uint8_t>(3)};
    DisplayPixels shown{1, 1, {}};
    return show(dot, profiles, 1.0f, shown) == VELORN_OK;
}

} // namespace

bool isSourceProfile(const ProfileBytes& profile) {
    return isAccepted({profile, {}});
}

bool isDisplayProfile(const ProfileBytes& profile) {
    return isAccepted({{}, profile});
}

DisplayPixels displayPixels(const RgbPixels& pixels, const DisplayProfiles& profiles, float scale) {
    DisplayPixels shown{sideAt(pixels.width, scale), sideAt(pixels.height, scale), {}};
    if (shown.width < 1 || shown.height < 1) {
        throw Failure("the picture has no pixels at this scale");
    }
    const std::int32_t status = show(pixels, profiles, scale, shown);
    if (status != VELORN_OK && status != kProfileRefused) {
        throw Failure("cannot be displayed: " + statusText(status));
    }
    return shown;
}

} // namespace velorn
