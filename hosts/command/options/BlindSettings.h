#pragma once

#include "hosts/command/kernels/KernelSize.h"
#include "hosts/command/pictures/PictureArea.h"

#include <filesystem>
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
    /// The part of the picture, as displayed, to look at; without it, all of the picture.
    std::optional<PictureArea> look;
    /// The file of a kernel to refine, if any. It refers to the picture as displayed.
    std::optional<std::filesystem::path> start;
    /// The kernel to use; 1 is the best one.
    int candidate = 1;
    /// Whether an uncertain kernel is a failure.
    bool isStrict = false;
    /// Whether each part of the picture gets a kernel of its own.
    bool isLocal = false;
    /// The largest number of threads; 0 is one for each processor.
    int threads = 0;
};

} // namespace velorn
