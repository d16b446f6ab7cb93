#pragma once

#include "restoration/threads/Cancellation.h"
#include "restoration/threads/HostProgress.h"
#include "restoration/threads/ProgressMeter.h"
#include "velimproclib/primitives/base/ControlWord.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace restoration {

/// The threads of one call. Work is cut into pieces; each piece runs on one worker.
///
/// The thread that makes the team owns it and calls all functions but `cancellation` and
/// `progress`, which belong to every thread. It does not work on pieces: it waits, and calls the
/// host's progress function while it waits. Workers have the floating-point control word of the
/// owner, but flush denormals to zero. They block signals from outside and end with
/// the team.
class Team {
public:
    /// The body of a loop: the number of the piece, and the number of the worker, which is below
    /// `threads()` and at most one piece at a time has.
    using Body = std::function<void(std::size_t piece, int worker)>;

    /// @param threads  largest number of workers; 0: one for each processor that the process may
    ///                 use
    Team(int threads, const HostProgress& host);
    ~Team();
    Team(const Team&) = delete;
    Team& operator=(const Team&) = delete;

    /// Largest number of workers, at least 1. They start when they are needed.
    int threads() const noexcept { return m_threads; }
    Cancellation& cancellation() noexcept { return m_cancellation; }
    ProgressMeter& progress() noexcept { return m_progress; }

    /// Runs body(piece, worker) for 0 <= piece < pieces. Workers take the pieces in ascending
    /// order. Works with fewer threads where the system refuses some, and on the calling thread
    /// where it refuses all.
    ///
    /// Rethrows the first failure, after all running pieces have ended; the failure cancels them
    /// and no further piece starts. A team that has failed has ended: it runs no more pieces.
    /// @throws Failure VELORN_STATUS_CANCELLED when the host cancels the call
    void forEach(std::size_t pieces, const Body& body);

    /// Runs `body` on one worker.
    void run(const std::function<void()>& body);

    /// Reports that all is done: the last call of the host's progress function, with 1.
    /// @throws Failure VELORN_STATUS_CANCELLED when the host cancels the call now
    void finish();

private:
    void startWorkers(std::size_t wanted);
    void work(int worker) noexcept;
    /// Runs a piece and keeps its failure. Holds `lock` before and after.
    void runPiece(std::unique_lock<std::mutex>& lock, std::size_t piece, int worker) noexcept;
    void waitForWorkers(std::unique_lock<std::mutex>& lock);
    void runHere(std::unique_lock<std::mutex>& lock);
    bool isDone() const noexcept { return m_nextPiece >= m_pieces && m_running == 0; }
    void report(double done);
    void reportWithout(std::unique_lock<std::mutex>& lock) noexcept;
    void fail(std::exception_ptr failure) noexcept;

    int m_threads;
    HostProgress m_host;
    double m_reported = 0.0;                              // only the owner uses it
    std::chrono::steady_clock::time_point m_lastReport{}; // the same
    vel::ControlWord m_word;
    Cancellation m_cancellation;
    ProgressMeter m_progress;

    std::mutex m_mutex; // guards what follows
    std::condition_variable m_hasPieces;
    std::condition_variable m_hasEnded;
    const Body* m_body = nullptr;
    std::size_t m_pieces = 0;
    std::size_t m_nextPiece = 0;
    int m_running = 0;
    bool m_isEnding = false;
    std::exception_ptr m_failure;

    std::vector<std::thread> m_workers;
};

} // namespace restoration
