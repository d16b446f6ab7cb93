#pragma once

#include "hosts/command/library/ProgressAccount.h"
#include "hosts/command/terminal/Interrupt.h"
#include "hosts/command/terminal/ProgressBar.h"

namespace velorn {

/// A progress function that draws on `bar` and cancels when a signal has arrived. Both arguments
/// must outlive it.
inline ProgressFunction shownProgress(ProgressBar& bar, const Interrupt& interrupt) {
    return [&](int current, int limit) {
        bar.show(current, limit);
        return !interrupt.isRequested();
    };
}

} // namespace velorn
