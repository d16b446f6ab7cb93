#pragma once

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace velorn {

/// Prints one line with the names of the metadata that the file `path` does not hold; nothing if
/// there are none.
void warnOfOmittedMetadata(const std::vector<std::string>& omitted,
                           const std::filesystem::path& path, std::ostream& terminal);

} // namespace velorn
