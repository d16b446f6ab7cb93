#pragma once

#include "hosts/command/kernels/BlurKernel.h"

#include <filesystem>
#include <optional>

namespace velorn {

/// Kernels in files: as text (`.txt`, `.csv`) or as pictures (all other extensions). The standard
/// input "-" holds text if it has no other control characters than blanks and line ends, and does
/// not begin like a picture format that is text.
///
/// Text holds one row of weights per line, separated by blanks, commas or semicolons; `#` starts a
/// comment. Written numbers read back exactly.
///
/// Pictures show each weight as a square of pixels, the largest weight white, and store the side of
/// the square in their description. Reading averages the colour channels, ignores alpha and
/// averages each square. Kernels that are read have the sum 1.
class KernelFile {
public:
    /// `scale` is the side of a weight's square in a picture, at least 1. Without it, the picture's
    /// description gives the side; a picture without such a description has the side 1.
    /// @throws Failure that names the file: unreadable, rows of different lengths, sides even or
    ///         above `kLargestKernelSide`, weights not finite, sum not positive.
    static BlurKernel read(const std::filesystem::path& path, std::optional<int> scale);

    /// Checks that the extension of `path` selects a format that can be written.
    /// @throws Failure that names `path`.
    static void checkWritable(const std::filesystem::path& path);

    /// Encodes `kernel` in the format that the extension of `path` selects.
    /// @returns the bytes of the file
    /// @throws Failure that names `path` when the format cannot be written.
    static std::vector<unsigned char> encode(const BlurKernel& kernel,
                                             const std::filesystem::path& path);
};

} // namespace velorn
