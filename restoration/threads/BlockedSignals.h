#pragma once

#if defined(__unix__) || defined(__APPLE__)
#include <csignal>
#define RESTORATION_HAS_SIGNAL_MASKS 1
#endif

namespace restoration {

/// Blocks the signals that come from outside on the current thread while the object lives; those
/// of a fault remain. Threads that are started meanwhile inherit the mask, therefore the host's
/// handlers of, say, interrupts never run on them.
class BlockedSignals {
public:
#if defined(RESTORATION_HAS_SIGNAL_MASKS)
    BlockedSignals() noexcept {
        sigset_t blocked;
        sigfillset(&blocked);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT}) {
            sigdelset(&blocked, fault);
        }
        pthread_sigmask(SIG_SETMASK, &blocked, &m_previous);
    }
    ~BlockedSignals() {
        pthread_sigmask(SIG_SETMASK, &m_previous, nullptr);
    }
#else
    BlockedSignals() noexcept = default;
    ~BlockedSignals() = default;
#endif
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
#if defined(RESTORATION_HAS_SIGNAL_MASKS)
    sigset_t m_previous;
#endif
};

} // namespace restoration
