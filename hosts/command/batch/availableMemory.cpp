#include "hosts/command/batch/availableMemory.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <optional>
#include <string>

namespace velorn {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();
/// Assumed where the system does not report any.
constexpr std::uint64_t kUnknown = std::uint64_t{1} << 30;

/// The number in the line of `file` that begins with `key`.
std::optional<std::uint64_t> valueOf(const fs::path& file, const std::string& key) {
    std::ifstream lines(file);
    std::string word;
    std::uint64_t value = 0;
    for (std::string rest; lines >> word; std::getline(lines, rest)) {
        if (word == key && lines >> value) {
            return value;
        }
        lines.clear();
    }
    return std::nullopt;
}

/// The only number of a file; nothing for "max" and for files that are missing.
std::optional<std::uint64_t> numberIn(const fs::path& file) {
    std::ifstream text(file);
    std::uint64_t number = 0;
    return text >> number ? std::optional(number) : std::nullopt;
}

/// A hierarchy of control groups: where it is mounted, and how its files are named.
struct Hierarchy {
    fs::path mount;
    const char* limit;
    const char* usage;
    const char* cache;
};

/// What the group and those that contain it leave. Cached files do not count: the system drops them
/// when memory is needed.
std::uint64_t leftIn(const Hierarchy& hierarchy, const fs::path& group) {
    std::uint64_t left = kUnlimited;
    for (fs::path part = group.relative_path();; part = part.parent_path()) {
        const fs::path folder = hierarchy.mount / part;
        const auto limit = numberIn(folder / hierarchy.limit);
        const auto usage = numberIn(folder / hierarchy.usage);
        if (limit && usage) {
            const std::uint64_t cache =
                valueOf(folder / "memory.stat", hierarchy.cache).value_or(0);
            const std::uint64_t used = *usage - std::min(*usage, cache);
            left = std::min(left, *limit - std::min(*limit, used));
        }
        if (part.empty()) {
            return left;
        }
    }
}

/// Lines have the form NUMBER:CONTROLLERS:GROUP; version 2 has no controllers in its line.
std::uint64_t leftInGroups(const fs::path& root) {
    std::uint64_t left = kUnlimited;
    std::ifstream lines(root / "proc/self/cgroup");
    for (std::string line; std::getline(lines, line);) {
        const std::size_t first = line.find(':');
        const std::size_t second = line.find(':', first + 1);
        if (first == std::string::npos || second == std::string::npos) {
            continue;
        }
        const std::string controllers = line.substr(first + 1, second - first - 1);
        const fs::path group = line.substr(second + 1);
        const fs::path mount = root / "sys/fs/cgroup";
        if (controllers.empty()) {
            left = std::min(
                left, leftIn({mount, "memory.max", "memory.current", "inactive_file"}, group));
        } else if (controllers == "memory") {
            left = std::min(left, leftIn({mount / "memory", "memory.limit_in_bytes",
                                          "memory.usage_in_bytes", "total_inactive_file"},
                                         group));
        }
    }
    return left;
}

} // namespace

std::uint64_t availableMemory(const fs::path& root) {
    constexpr std::uint64_t kKibi = 1024;
    const auto system = valueOf(root / "proc/meminfo", "MemAvailable:");
    return std::min(system ? *system * kKibi : kUnknown, leftInGroups(root));
}

} // namespace velorn
