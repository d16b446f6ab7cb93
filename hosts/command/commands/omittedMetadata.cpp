#include "hosts/command/commands/omittedMetadata.h"

#include "hosts/command/files/fileFailures.h"

namespace velorn {
namespace {

/// More names would not fit into a line.
constexpr std::size_t kMostNames = 6;

} // namespace

void warnOfOmittedMetadata(const std::vector<std::string>& omitted,
                           const std::filesystem::path& path, std::ostream& terminal) {
    if (omitted.empty()) {
        return;
    }
    terminal << "velorn: warning: " << quoted(path) << " has no room for ";
    for (std::size_t i = 0; i < omitted.size() && i < kMostNames; ++i) {
        terminal << (i == 0 ? "" : ", ") << omitted[i];
    }
    if (omitted.size() > kMostNames) {
        terminal << " and " << omitted.size() - kMostNames << " more";
    }
    terminal << '\n';
}

} // namespace velorn
