#pragma once

#include <ostream>

namespace velorn {

/// A bar on one line of a terminal, that is redrawn only when it has to change. It wipes its line
/// when it is destroyed, so that what follows starts on a clean one.
class ProgressBar {
public:
    /// Draws on `terminal` when `isShown`, and is silent otherwise.
    ProgressBar(std::ostream& terminal, bool isShown) : m_terminal(terminal), m_isShown(isShown) {}
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Shows `current` of `limit`; a limit below 1 counts as nothing done.
    void show(int current, int limit);

private:
    std::ostream& m_terminal;
    bool m_isShown;
    int m_percent = -1;
};

} // namespace velorn
