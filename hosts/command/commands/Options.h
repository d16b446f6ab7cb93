#pragma once

#include "hosts/command/blind/BlindKernel.h"
#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/restoration/Restoration.h"

#include <filesystem>
#include <optional>
#include <ostream>
#include <variant>

namespace velorn {

/// A kernel in a file, and the side of a weight's square when the user tells it.
struct KernelPath {
    std::filesystem::path path;
    std::optional<int> scale;
};

/// Where a restoration's kernel comes from; nothing when the deconvolution is left out.
using KernelSource = std::variant<std::monostate, AnalyticBlur, KernelPath, BlindSettings>;

/// `velorn deblur`
struct DeblurOptions {
    std::filesystem::path input;
    std::filesystem::path output;
    KernelSource kernel;
    /// `lambda` in here counts only when `lambdaIsGiven`.
    RestorationSettings settings;
    bool lambdaIsGiven = false;
    /// Passes that continue the picture beyond its frame, see `restoreInFrame`.
    int framePasses = 2;
    bool isVerbose = false;
};

/// `velorn kernel`
struct KernelOptions {
    AnalyticBlur blur;
    std::filesystem::path output;
};

/// `velorn estimate`
struct EstimateOptions {
    std::filesystem::path input;
    std::filesystem::path output;
    BlindSettings blind;
};

/// `velorn preview`
struct PreviewOptions {
    std::filesystem::path input;
    std::filesystem::path output;
    float scale = 1.0f;
    std::optional<std::filesystem::path> profile;
};

using Command = std::variant<DeblurOptions, KernelOptions, EstimateOptions, PreviewOptions>;

/// Reads the command line. Help and version are written to `out`, and there is no command then.
/// @throws UsageFailure with one line that says what does not fit.
std::optional<Command> parseCommandLine(int argc, const char* const* argv, std::ostream& out);

} // namespace velorn
