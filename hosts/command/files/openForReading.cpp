#include "hosts/command/files/openForReading.h"

#include "hosts/command/files/fileFailures.h"

#include <cerrno>
#include <cstring>

namespace velorn {

std::ifstream openForReading(const std::filesystem::path& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::is_directory(status)) {
        throw cannotRead(path, "it is a folder");
    }
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw cannotRead(path, "not a regular file");
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw cannotRead(path, std::strerror(errno));
    }
    return file;
}

} // namespace velorn
