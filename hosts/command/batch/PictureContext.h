#pragma once

#include "velorn.hpp"

#include <cstdint>
#include <functional>
#include <string>

namespace velorn {

/// What the restoration of one picture may use, and where it reports.
struct PictureContext {
    /// Called once the size of the picture is known, with the bytes that the restoration takes.
    /// Returns, when this memory is free, the largest number of threads to use; 0 is one for each
    /// processor.
    std::function<int(std::uint64_t bytes)> reserve;
    /// Receives how much of the picture is done, 0..1; returns whether to go on.
    api::Progress progress;
    /// Prints lines for the user.
    std::function<void(const std::string& lines)> print;
    /// Whether to print the kernel that was found.
    bool printsBlur = false;
};

} // namespace velorn
