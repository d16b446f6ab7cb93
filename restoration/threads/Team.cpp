#include "restoration/threads/Team.h"

#include "restoration/threads/availableProcessors.h"
#include "restoration/threads/BlockedSignals.h"
#include "restoration/threads/FlushedDenormals.h"

#include <algorithm>
#include <chrono>
#include <system_error>

namespace restoration {
namespace {

/// The host hears from a call at least every 50 ms, late wake-ups on busy machines included.
constexpr std::chrono::milliseconds kReportInterval(30);

} // namespace

Team::Team(int threads, const HostProgress& host)
    : m_threads(threads > 0 ? threads : availableProcessors()), m_host(host),
      m_word(vel::ControlWord::ofThisThread()) {}

Team::~Team() {
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_hasPieces.notify_all();
    for (std::thread& worker : m_workers) {
        worker.join();
    }
}

void Team::forEach(std::size_t pieces, const Body& body) {
    if (pieces == 0) {
        return;
    }
    m_cancellation.check();
    if (std::chrono::steady_clock::now() - m_lastReport >= kReportInterval) {
        report(m_progress.done());
    }
    startWorkers(pieces);

    std::unique_lock lock(m_mutex);
    m_body = &body;
    m_pieces = pieces;
    m_nextPiece = 0;
    if (m_workers.empty()) {
        runHere(lock);
    } else {
        m_hasPieces.notify_all();
        waitForWorkers(lock);
    }
    m_body = nullptr;
    m_pieces = 0;
    if (m_failure) {
        std::rethrow_exception(m_failure);
    }
    m_cancellation.check();
}

void Team::run(const std::function<void()>& body) {
    forEach(1, [&body](std::size_t, int) { body(); });
}

void Team::finish() {
    m_cancellation.check();
    report(1.0);
}

void Team::startWorkers(std::size_t wanted) {
    const std::size_t count = std::min(wanted, static_cast<std::size_t>(m_threads));
    m_workers.reserve(count);
    const BlockedSignals blocked;
    try {
        while (m_workers.size() < count) {
            const int worker = static_cast<int>(m_workers.size());
            m_workers.emplace_back([this, worker]() noexcept { work(worker); });
        }
    } catch (const std::system_error&) {
        // The system refuses a thread. Those that run do the work.
    }
}

void Team::work(int worker) noexcept {
    const FlushedDenormals flushed(m_word);
    std::unique_lock lock(m_mutex);
    while (true) {
        m_hasPieces.wait(lock, [this] { return m_isEnding || m_nextPiece < m_pieces; });
        if (m_isEnding) {
            return;
        }
        const std::size_t piece = m_nextPiece++;
        runPiece(lock, piece, worker);
        if (isDone()) {
            m_hasEnded.notify_one();
        }
    }
}

void Team::runPiece(std::unique_lock<std::mutex>& lock, std::size_t piece, int worker) noexcept {
    ++m_running;
    const Body& body = *m_body;
    lock.unlock();
    std::exception_ptr failure;
    try {
        m_cancellation.check();
        body(piece, worker);
        m_progress.countPiece();
    } catch (...) {
        failure = std::current_exception();
    }
    lock.lock();
    --m_running;
    if (failure) {
        fail(failure);
    }
}

void Team::fail(std::exception_ptr failure) noexcept {
    if (!m_failure) {
        m_failure = std::move(failure);
    }
    m_nextPiece = m_pieces;
    m_cancellation.request();
}

void Team::waitForWorkers(std::unique_lock<std::mutex>& lock) {
    while (!m_hasEnded.wait_for(lock, kReportInterval, [this] { return isDone(); })) {
        reportWithout(lock);
    }
}

void Team::runHere(std::unique_lock<std::mutex>& lock) {
    const FlushedDenormals flushed(m_word);
    while (m_nextPiece < m_pieces) {
        const std::size_t piece = m_nextPiece++;
        runPiece(lock, piece, 0);
        reportWithout(lock);
    }
}

void Team::report(double done) {
    m_reported = std::max(m_reported, done);
    m_lastReport = std::chrono::steady_clock::now();
    if (!m_host.report(m_reported)) {
        m_cancellation.request();
        m_cancellation.check();
    }
}

/// Reports without the lock. A cancellation becomes the failure of the call.
void Team::reportWithout(std::unique_lock<std::mutex>& lock) noexcept {
    if (m_cancellation.isRequested()) {
        return;
    }
    lock.unlock();
    std::exception_ptr failure;
    try {
        report(m_progress.done());
    } catch (...) {
        failure = std::current_exception();
    }
    lock.lock();
    if (failure) {
        fail(failure);
    }
}

} // namespace restoration
