#pragma once

#include "hosts/command/terminal/Failure.h"

#include <filesystem>
#include <string>
#include <utility>

namespace velorn {

// Failures that name a file, with the wording that all commands share.

/// The name of a file in single quotes, as messages show it: printable, and shortened in the middle
/// if it is long.
std::string quoted(const std::filesystem::path& path);

/// "cannot read 'PATH': REASON"
Failure cannotRead(const std::filesystem::path& path, const std::string& reason);

/// "cannot write 'PATH': REASON"
Failure cannotWrite(const std::filesystem::path& path, const std::string& reason);

/// The failure of --no-clobber for an output that exists.
Failure outputExists(const std::filesystem::path& path);

/// "'PATH': REASON"
Failure failureIn(const std::filesystem::path& path, const std::string& reason);

/// Returns `work()`. Where `work` throws a `Failure`, it is thrown again with the name of `path`
/// in front.
template <class Work>
auto naming(const std::filesystem::path& path, Work&& work) {
    try {
        return std::forward<Work>(work)();
    } catch (const Failure& failure) {
        throw failureIn(path, failure.what());
    }
}

} // namespace velorn
