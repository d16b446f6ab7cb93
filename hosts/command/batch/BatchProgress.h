#pragma once

#include "hosts/command/terminal/ProgressBar.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace velorn {

/// One progress bar for all pictures of a batch, with the number of pictures done and the time that
/// is left. Any number of threads may use an object at once.
class BatchProgress {
public:
    using Clock = std::chrono::steady_clock;

    /// @param count the number of pictures, each of which counts the same
    BatchProgress(std::size_t count, std::ostream& terminal, bool isShown)
        : m_shares(count), m_terminal(terminal), m_bar(terminal, isShown) {}

    /// Sets how much of the picture at `place` is done, 0..1.
    void set(std::size_t place, double done);
    /// Marks the picture at `place` as done.
    void finish(std::size_t place);

    /// The number of pictures that are not done; those in work count by what they lack.
    double left() const;

    /// Draws the bar again.
    void draw();
    /// Prints `text` instead of the bar, which the next `draw` shows again.
    void print(const std::string& text);

    /// The time since the object was created.
    std::chrono::duration<double> time() const { return Clock::now() - m_begin; }

private:
    std::string note(double share) const;

    const Clock::time_point m_begin = Clock::now();
    std::vector<std::atomic<float>> m_shares;
    std::atomic<std::size_t> m_finished = 0;
    std::mutex m_mutex;
    std::ostream& m_terminal;
    ProgressBar m_bar;
};

} // namespace velorn
