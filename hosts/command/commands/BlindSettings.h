#pragma once

#include "hosts/command/kernels/KernelSize.h"

#include <optional>

namespace velorn {

/// Whether a kernel that was found is rotated by 180 degrees. Auto keeps it as the library orients
/// it.
enum class Turn { No, Yes, Auto };

/// How the kernel of a picture with unknown blur is found.
struct BlindSettings {
    /// The largest sides of the kernel; without them, the picture decides.
    std::optional<KernelSize> largest;
    /// How much edges are smoothed before the kernel is fitted to them, in pixels.
    float smoothing = 0.0f;
    Turn turn = Turn::Auto;
};

} // namespace velorn
