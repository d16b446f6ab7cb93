#pragma once

#include <array>
#include <csignal>
#include <exception>

namespace velorn {

/// The user pressed Ctrl-C, the terminal was closed, the system asked the program to end, or the
/// reader of the standard output is gone (SIGPIPE).
class Interrupted : public std::exception {
public:
    explicit Interrupted(int signal) : m_signal(signal) {}
    int signal() const noexcept { return m_signal; }
    const char* what() const noexcept override { return "interrupted"; }

private:
    int m_signal;
};

/// Records SIGHUP, SIGINT, SIGQUIT and SIGTERM, so that the program can stop at a point where no
/// file is half written. Signals that the process was started to ignore stay ignored. Only one
/// object may exist at a time; its destructor restores the previous handlers.
class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// Whether a signal has arrived.
    bool isRequested() const;

    /// @throws Interrupted when a signal has arrived.
    void check() const;

    /// The same for the object that exists; does nothing when there is none.
    static void checkCurrent();

private:
    static constexpr std::array<int, 4> kSignals{SIGHUP, SIGINT, SIGQUIT, SIGTERM};
    std::array<struct sigaction, kSignals.size()> m_former{};
};

} // namespace velorn
