#pragma once

#include <cstddef>
#include <ostream>
#include <string>

namespace velorn {

/// A progress bar on one line of a terminal, redrawn only when its percentage or its note changes.
/// The destructor clears the line.
class ProgressBar {
public:
    /// Draws on `terminal` if `isShown`; otherwise writes nothing.
    ProgressBar(std::ostream& terminal, bool isShown) : m_terminal(terminal), m_isShown(isShown) {}
    ~ProgressBar() { clear(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Shows `current` of `limit`, cut to 0..100 %, and `note` behind it. A limit below 1 shows 0
    /// %.
    void show(int current, int limit, const std::string& note = {});

    /// Clears the line, so that something else can be written; the next `show` draws again.
    void clear();

private:
    std::ostream& m_terminal;
    bool m_isShown;
    std::string m_line;
};

} // namespace velorn
