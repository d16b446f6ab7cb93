#pragma once

#include "hosts/command/options/DeblurOptions.h"
#include "hosts/command/options/EstimateOptions.h"
#include "hosts/command/options/KernelOptions.h"
#include "hosts/command/options/PreviewOptions.h"
#include "hosts/command/options/TryOptions.h"

#include <optional>
#include <ostream>
#include <variant>

namespace velorn {

using Command =
    std::variant<DeblurOptions, KernelOptions, EstimateOptions, PreviewOptions, TryOptions>;

/// Parses the command line.
/// @returns the command, or nothing after help, version or a completion script, which are written
/// to
///          `out`
/// @throws UsageFailure with one line that names the error.
std::optional<Command> parseCommandLine(int argc, const char* const* argv, std::ostream& out);

} // namespace velorn
