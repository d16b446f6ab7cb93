#pragma once

#include <ostream>

namespace velorn {

/// A progress bar on one line of a terminal, redrawn only when its percentage changes. The
/// destructor clears the line.
class ProgressBar {
public:
    /// Draws on `terminal` if `isShown`; otherwise writes nothing.
    ProgressBar(std::ostream& terminal, bool isShown) : m_terminal(terminal), m_isShown(isShown) {}
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Shows `current` of `limit`, cut to 0..100 %. A limit below 1 shows 0 %.
    void show(int current, int limit);

private:
    std::ostream& m_terminal;
    bool m_isShown;
    int m_percent = -1;
};

} // namespace velorn
