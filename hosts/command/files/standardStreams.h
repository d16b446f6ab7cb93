#pragma once

#include <filesystem>
#include <vector>

namespace velorn {

/// Whether `path` is "-", the name of the standard input or the standard output. A file of this
/// name is "./-".
inline bool isStandardStream(const std::filesystem::path& path) {
    return path == "-";
}

/// The name of an input for messages.
std::filesystem::path shownInput(const std::filesystem::path& path);

/// The name of an output for messages.
std::filesystem::path shownOutput(const std::filesystem::path& path);

/// Checks that the standard input is read for one of `inputs` at most.
/// @throws UsageFailure
void checkStandardInput(const std::vector<std::filesystem::path>& inputs);

} // namespace velorn
