#include "hosts/command/batch/runBatch.h"

#include "hosts/command/batch/BatchProgress.h"
#include "hosts/command/batch/BatchReport.h"
#include "hosts/command/batch/MemoryBudget.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/TemporaryFile.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <new>
#include <thread>
#include <unistd.h>

namespace velorn {
namespace {

using namespace std::chrono_literals;

/// How often signals are looked for and the progress bar is drawn.
constexpr auto kInterval = 40ms;
/// How long pictures in work may take to end after a signal.
constexpr auto kGrace = 100ms;
constexpr int kSignalBase = 128;

/// The places in `plan` of the pictures to restore.
std::vector<std::size_t> workIn(const std::vector<PlannedPicture>& plan) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < plan.size(); ++i) {
        if (!plan[i].failure && !plan[i].isSkipped) {
            places.push_back(i);
        }
    }
    return places;
}

BatchReport reportBefore(const std::vector<PlannedPicture>& plan) {
    BatchReport report;
    for (std::size_t i = 0; i < plan.size(); ++i) {
        if (plan[i].failure) {
            report.addFailed(i, *plan[i].failure);
        } else if (plan[i].isSkipped) {
            report.addSkipped();
        }
    }
    return report;
}

/// The text of the exception that is being handled, about the picture in `path`.
std::string currentFailure(const std::filesystem::path& path) {
    try {
        throw;
    } catch (const Failure& failure) {
        return failure.what();
    } catch (const std::bad_alloc&) {
        return failureIn(path, "out of memory").what();
    } catch (const std::exception& failure) {
        return failureIn(path, failure.what()).what();
    } catch (...) {
        return failureIn(path, "unknown error").what();
    }
}

class Run {
public:
    Run(const std::vector<PlannedPicture>& plan, const BatchSettings& settings,
        const RestorePicture& restore, const Interrupt& interrupt, std::ostream& terminal,
        bool isTerminal)
        : m_plan(plan), m_work(workIn(plan)), m_settings(settings), m_restore(restore),
          m_interrupt(interrupt), m_memory(settings.memory), m_report(reportBefore(plan)),
          m_progress(m_work.size(), terminal, isTerminal) {}

    int run() {
        start();
        const bool hasEnded = waitForEnd();
        {
            const std::lock_guard lock(m_mutex);
            m_report.addLeft(m_work.size() - m_ended);
            m_progress.print(m_report.text(m_progress.time()));
        }
        if (!hasEnded) {
            abandon();
        }
        for (std::thread& worker : m_workers) {
            worker.join();
        }
        m_interrupt.check();
        return m_report.exitStatus();
    }

private:
    void start() {
        const auto most = static_cast<std::size_t>(std::max(m_settings.threads, 1));
        m_running = std::min(most, m_work.size());
        for (std::size_t i = m_running; i > 0; --i) {
            m_workers.emplace_back([this] { work(); });
        }
    }

    void work() {
        while (!m_interrupt.isRequested()) {
            const std::size_t index = m_next++;
            if (index >= m_work.size()) {
                break;
            }
            restoreAt(index);
        }
        const std::lock_guard lock(m_mutex);
        --m_running;
        m_changed.notify_all();
    }

    void restoreAt(std::size_t index) {
        const std::size_t place = m_work[index];
        const PictureFiles& files = m_plan[place].files;
        std::string failure;
        std::string lines;
        try {
            restorePicture(index, files, lines);
        } catch (const Interrupted&) {
            return;
        } catch (...) {
            failure = currentFailure(files.input);
        }
        m_progress.finish(index);
        if (!lines.empty()) {
            m_progress.print(lines);
        }
        const std::lock_guard lock(m_mutex);
        ++m_ended;
        if (failure.empty()) {
            m_report.addRestored();
        } else {
            m_report.addFailed(place, failure);
        }
    }

    void restorePicture(std::size_t index, const PictureFiles& files, std::string& lines) {
        MemoryBudget::Share share;
        PictureContext context;
        context.reserve = [&](std::uint64_t bytes) {
            share = m_memory.take(bytes);
            m_interrupt.check();
            return threadsFor(bytes);
        };
        context.progress = [&](double done) {
            m_progress.set(index, done);
            return !m_interrupt.isRequested();
        };
        context.print = [&](const std::string& text) { lines += text; };
        context.printsBlur = m_settings.printsBlur;
        m_restore(files, context);
    }

    /// The threads for a picture that takes `bytes` of memory.
    int threadsFor(std::uint64_t bytes) const {
        const double fitting =
            std::floor(static_cast<double>(m_settings.memory) / static_cast<double>(bytes + 1));
        const double atOnce = std::max(1.0, std::min(fitting, m_progress.left()));
        return std::max(1, static_cast<int>(std::lround(m_settings.threads / atOnce)));
    }

    /// Waits until the workers have ended, or are late after a signal.
    /// @returns whether they have ended
    bool waitForEnd() {
        const auto hasEnded = [&] { return m_running == 0; };
        std::unique_lock lock(m_mutex);
        while (!m_changed.wait_for(lock, kInterval, hasEnded)) {
            if (m_interrupt.isRequested()) {
                return m_changed.wait_for(lock, kGrace, hasEnded);
            }
            m_progress.draw();
        }
        return true;
    }

    [[noreturn]] void abandon() const {
        TemporaryFile::removeAll();
        try {
            m_interrupt.check();
        } catch (const Interrupted& signal) {
            ::_exit(kSignalBase + signal.signal());
        }
        std::terminate(); // only a signal makes a batch abandon its pictures
    }

    const std::vector<PlannedPicture>& m_plan;
    const std::vector<std::size_t> m_work;
    const BatchSettings m_settings;
    const RestorePicture& m_restore;
    const Interrupt& m_interrupt;
    MemoryBudget m_memory;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_running = 0;
    std::size_t m_ended = 0;
    BatchReport m_report;
    std::atomic<std::size_t> m_next = 0;
    BatchProgress m_progress;
    std::vector<std::thread> m_workers;
};

} // namespace

int runBatch(const std::vector<PlannedPicture>& plan, const BatchSettings& settings,
             const RestorePicture& restore, const Interrupt& interrupt, std::ostream& terminal,
             bool isTerminal) {
    return Run(plan, settings, restore, interrupt, terminal, isTerminal).run();
}

} // namespace velorn
