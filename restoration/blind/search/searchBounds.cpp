#include "restoration/blind/search/searchBounds.h"

#include "restoration/failures/Failure.h"

#include <algorithm>
#include <string>

namespace restoration {
namespace {

constexpr int kLeastPictureSide = 32;

int odd(int side) {
    return side | 1;
}

/// @param possible the largest side that the picture allows
KernelBounds boundsAround(const Kernel& start, int possible) {
    const int most = std::min(possible, kLargestRunSide);
    if (start.largerSide() > most) {
        throw Failure(VELORN_STATUS_KERNEL_TOO_LARGE,
                      "the kernel to refine is " + std::to_string(start.width) + " by " +
                          std::to_string(start.height) + ", but may only be " +
                          std::to_string(most) + " by " + std::to_string(most));
    }
    const auto room = [most](int side) { return std::min(odd(2 * side + 3), most); };
    return {room(start.width), room(start.height)};
}

} // namespace

KernelBounds searchBounds(const Plane& luminance, const FindSettings& settings) {
    const int shorter = std::min(luminance.width(), luminance.height());
    if (shorter < kLeastPictureSide) {
        throw Failure(VELORN_STATUS_NO_KERNEL, "the picture is too small to find a kernel");
    }
    if (settings.start != nullptr) {
        return boundsAround(*settings.start, odd(shorter / 3));
    }
    const auto bound = [shorter](int wanted) {
        return wanted == 0 ? odd(shorter / 5)
                           : std::min(odd(std::max(wanted - 1, 3)), odd(shorter / 3));
    };
    return {bound(settings.maxWidth), bound(settings.maxHeight)};
}

int fittingSide(int extent) noexcept {
    return std::max(odd(static_cast<int>(1.4 * extent + 3.0)), 7);
}

} // namespace restoration
