#pragma once

#include "velorn.hpp"

namespace velorn {

/// A progress function for a call that takes the share `from`..`to` of what `whole` shows.
inline api::Progress slicedProgress(const api::Progress& whole, double from, double to) {
    return [=](double done) { return whole(from + done * (to - from)); };
}

} // namespace velorn
