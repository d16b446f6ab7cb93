#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/options/BlindSettings.h"

#include <filesystem>
#include <optional>
#include <variant>

namespace velorn {

/// A kernel in a file, and the side of a weight's square if the user gives it.
struct KernelPath {
    std::filesystem::path path;
    std::optional<int> scale;
};

/// Where the kernel of a restoration comes from; nothing without deconvolution.
using KernelSource = std::variant<std::monostate, AnalyticBlur, KernelPath, BlindSettings>;

} // namespace velorn
