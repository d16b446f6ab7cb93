#pragma once

#include "hosts/command/kernels/BlurKernel.h"

#include <filesystem>
#include <optional>

namespace velorn {

/// Kernels in files: as text (`.txt`, `.csv`) or as pictures (every other extension).
///
/// Text holds one row of weights a line, parted by blanks, commas or semicolons; what follows a `#`
/// is a remark. Numbers are written so that they read back exactly.
///
/// Pictures show one square of pixels for each weight, the largest weight white, and carry the
/// square's side in their description. Reading averages the colour channels, ignores alpha,
/// averages each square and scales the sum to 1.
class KernelFile {
public:
    /// `scale` is the side of a weight's square in a picture; without it, the picture's own
    /// description tells, and 1 counts for a picture that says nothing.
    /// @throws Failure naming the file: unreadable, ragged, even sides, not finite, sum 0.
    static BlurKernel read(const std::filesystem::path& path, std::optional<int> scale);

    /// Ends with a failure, naming `path`, when no kernel can be written under such a name.
    static void checkWritable(const std::filesystem::path& path);

    /// The bytes of a file with `kernel`, of the kind that the extension of `path` names.
    static std::vector<unsigned char> encode(const BlurKernel& kernel,
                                             const std::filesystem::path& path);
};

} // namespace velorn
