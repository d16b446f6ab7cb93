#pragma once

#include "hosts/command/pictures/RgbPixels.h"
#include "velorn.hpp"

namespace velorn::tools {

/// `pixels` (8 bits) restored by the library.
inline RgbPixels restored(RgbPixels pixels, const api::Kernel& kernel,
                          const VelornRestoreSettings& settings = api::restoreSettings()) {
    auto& samples = std::get<std::vector<std::uint8_t>>(pixels.samples);
    const VelornPicture view = api::pictureOf(samples.data(), pixels.width, pixels.height, 3);
    api::restore(view, view, {kernel}, settings);
    return pixels;
}

} // namespace velorn::tools
