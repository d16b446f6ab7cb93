#pragma once

#include <filesystem>

namespace velorn {

/// Whether `path` is "-", the name of the standard input or the standard output. A file of this
/// name is "./-".
inline bool isStandardStream(const std::filesystem::path& path) {
    return path == "-";
}

} // namespace velorn
