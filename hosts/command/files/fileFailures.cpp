#include "hosts/command/files/fileFailures.h"

namespace velorn {

std::string quoted(const std::filesystem::path& path) {
    return std::string("'").append(path.string()).append("'");
}

Failure cannotRead(const std::filesystem::path& path, const std::string& reason) {
    return Failure("cannot read " + quoted(path) + ": " + reason);
}

Failure cannotWrite(const std::filesystem::path& path, const std::string& reason) {
    return Failure("cannot write " + quoted(path) + ": " + reason);
}

Failure failureIn(const std::filesystem::path& path, const std::string& reason) {
    return Failure(quoted(path) + ": " + reason);
}

} // namespace velorn
