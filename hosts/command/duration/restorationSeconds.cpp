#include "hosts/command/duration/restorationSeconds.h"

#include "velorn.h"

#include <algorithm>
#include <cmath>

namespace velorn {
namespace {

constexpr double kSecondsOfMegapixel = 0.35;
constexpr double kSecondsOfKernelPixel = 0.0017;
constexpr double kGrey = 0.6;

double factorOf(std::int32_t quality) {
    switch (quality) {
    case VELORN_QUALITY_FAST:
        return 0.8;
    case VELORN_QUALITY_BEST:
        return 1.7;
    default:
        return 1.0;
    }
}

} // namespace

double restorationSeconds(const RestorationWork& work) {
    const auto wide = [&](int side) { return static_cast<double>(side) + 2.0 * work.kernelSide; };
    const double megapixels = wide(work.width) * wide(work.height) / 1e6;
    const double seconds =
        megapixels * (kSecondsOfMegapixel + kSecondsOfKernelPixel * work.kernelSide);
    return seconds * factorOf(work.quality) * (work.isGrey ? kGrey : 1.0) /
           std::max(work.threads, 1);
}

std::string aboutText(double seconds) {
    const bool isHours = seconds >= 5400.0;
    const auto count = static_cast<std::int64_t>(
        std::max(1.0, std::round(std::min(seconds, 1e12) / (isHours ? 3600.0 : 60.0))));
    return std::string("about ")
               .append(std::to_string(count))
               .append(isHours ? " hour" : " minute") +
           (count == 1 ? "" : "s");
}

} // namespace velorn
