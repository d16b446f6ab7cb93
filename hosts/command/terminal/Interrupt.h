#pragma once

#include <array>
#include <csignal>

namespace velorn {

/// Takes note of Ctrl-C and of requests to end, so that the program can stop where nothing is left
/// half done. One object at a time; the former handlers come back with its destruction. Signals
/// that the process was started to ignore stay ignored.
class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// Whether a signal has come.
    bool isRequested() const;

    /// @throws Interrupted when a signal has come.
    void check() const;

private:
    static constexpr std::array<int, 2> kSignals{SIGINT, SIGTERM};
    std::array<struct sigaction, kSignals.size()> m_former{};
};

} // namespace velorn
