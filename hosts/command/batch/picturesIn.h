#pragma once

#include <filesystem>
#include <vector>

namespace velorn {

/// The pictures in `folder`, sorted by name: regular files with the extension of a picture format.
/// Hidden files are left out.
/// @throws Failure that names the folder when it cannot be read or has no pictures.
std::vector<std::filesystem::path> picturesIn(const std::filesystem::path& folder);

} // namespace velorn
