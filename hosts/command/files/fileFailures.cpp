#include "hosts/command/files/fileFailures.h"

#include "hosts/command/terminal/errorLine.h"

namespace velorn {
namespace {

/// Leaves room for the reason in a line of `kLongestErrorLine` characters.
constexpr std::size_t kLongestName = 160;

} // namespace

std::string quoted(const std::filesystem::path& path) {
    return std::string("'").append(shortened(printable(path.string()), kLongestName)).append("'");
}

Failure cannotRead(const std::filesystem::path& path, const std::string& reason) {
    return Failure("cannot read " + quoted(path) + ": " + reason);
}

Failure cannotWrite(const std::filesystem::path& path, const std::string& reason) {
    return Failure("cannot write " + quoted(path) + ": " + reason);
}

Failure outputExists(const std::filesystem::path& path) {
    return cannotWrite(path, "the file exists, and --no-clobber keeps it");
}

Failure failureIn(const std::filesystem::path& path, const std::string& reason) {
    return Failure(quoted(path) + ": " + reason);
}

} // namespace velorn
