#pragma once

#include <string>

namespace velorn {

/// The sides of a kernel in weights.
struct KernelSize {
    int width = 0;
    int height = 0;

    int largerSide() const { return width > height ? width : height; }
    /// "WIDTH by HEIGHT", for messages.
    std::string text() const { return std::to_string(width) + " by " + std::to_string(height); }
};

/// `size`, which refers to the picture as displayed, for the rows and columns as a file with the
/// given EXIF orientation (1..8) stores them.
KernelSize asStored(KernelSize size, int orientation);

} // namespace velorn
