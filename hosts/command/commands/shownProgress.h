#pragma once

#include "hosts/command/terminal/Interrupt.h"
#include "hosts/command/terminal/ProgressBar.h"
#include "velorn.hpp"

namespace velorn {

/// A progress function that draws on `bar` and cancels when a signal has arrived. Both arguments
/// must outlive it.
inline api::Progress shownProgress(ProgressBar& bar, const Interrupt& interrupt) {
    return [&](double done) {
        constexpr int kUnits = 1000;
        bar.show(static_cast<int>(done * kUnits), kUnits);
        return !interrupt.isRequested();
    };
}

} // namespace velorn
