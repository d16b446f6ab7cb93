#pragma once

#include "hosts/command/pictures/ImageFile.h"

#include <filesystem>
#include <string>
#include <vector>

namespace velorn {

/// The bytes of `picture` for the file `output`, in the format that `outputFormat` gives.
/// @throws Failure that names `output`.
std::vector<unsigned char> encodedPicture(const ImageFile& picture,
                                          const std::filesystem::path& output,
                                          const std::string& format);

} // namespace velorn
