#pragma once

#include "hosts/command/commands/DeblurOptions.h"
#include "hosts/command/commands/EstimateOptions.h"
#include "hosts/command/commands/KernelOptions.h"
#include "hosts/command/commands/PreviewOptions.h"
#include "hosts/command/commands/TryOptions.h"

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
