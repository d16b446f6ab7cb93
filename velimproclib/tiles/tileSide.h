#pragma once

#include <algorithm>

namespace vel {

/// Side of the square tiles for an image of `width` by `height` pixels, margin included: 256 if the
/// larger side is at most 256, 1024 if it is 513 to 1024, and 512 otherwise. Images above 1024 are
/// cut into tiles of 512 rather than 1024.
///
/// `velorn` cannot include this header and repeats the rule in
/// hosts/command/restoration/KernelLimit.cpp. The test there compares it with the library.
constexpr int tileSideFor(int width, int height) noexcept {
    const int side = std::max(width, height);
    if (side <= 256) {
        return 256;
    }
    return side > 512 && side <= 1024 ? 1024 : 512;
}

} // namespace vel
