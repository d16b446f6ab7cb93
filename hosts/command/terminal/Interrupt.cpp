#include "hosts/command/terminal/Interrupt.h"

namespace velorn {
namespace {

/// The signal that arrived, or 0. Global because a signal handler receives no user data.
volatile std::sig_atomic_t g_signal = 0;

void recordSignal(int signal) {
    g_signal = signal;
}

} // namespace

Interrupt::Interrupt() {
    g_signal = 0;
    struct sigaction action {};
    action.sa_handler = recordSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], nullptr, &m_former[i]);
        if (m_former[i].sa_handler != SIG_IGN) {
            sigaction(kSignals[i], &action, nullptr);
        }
    }
}

Interrupt::~Interrupt() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], &m_former[i], nullptr);
    }
    g_signal = 0;
}

bool Interrupt::isRequested() const {
    return g_signal != 0;
}

void Interrupt::check() const {
    checkCurrent();
}

void Interrupt::checkCurrent() {
    if (const int signal = g_signal; signal != 0) {
        throw Interrupted(signal);
    }
}

} // namespace velorn
