#pragma once

#include <filesystem>

namespace velorn {

/// The file of a picture and the file that its result goes to.
struct PictureFiles {
    std::filesystem::path input;
    std::filesystem::path output;
};

/// What happens to a result whose file exists already.
enum class Existing { Replace, Skip, Refuse };

} // namespace velorn
