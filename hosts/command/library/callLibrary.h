#pragma once

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/terminal/Interrupt.h"
#include "velorn.hpp"

#include <filesystem>
#include <utility>

namespace velorn {

/// Returns `call()`, a call of the restoration library about the picture in `path`.
/// @throws Interrupted when a signal cancelled the call, Failure that names `path` when the call
///         failed
template <class Call>
auto callLibrary(const std::filesystem::path& path, const Interrupt& interrupt, Call&& call) {
    try {
        return std::forward<Call>(call)();
    } catch (const api::Failure& failure) {
        interrupt.check();
        throw failureIn(path, failure.what());
    }
}

} // namespace velorn
