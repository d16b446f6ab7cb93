#pragma once

#include <filesystem>
#include <fstream>

namespace velorn {

/// Opens a regular file for reading bytes. Folders, devices and pipes are refused, because reading
/// them may never end.
/// @throws Failure that names the file.
std::ifstream openForReading(const std::filesystem::path& path);

} // namespace velorn
