#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>

namespace velorn {

/// The outcome of a batch.
class BatchReport {
public:
    void addRestored() { ++m_restored; }
    void addSkipped() { ++m_skipped; }
    /// @param place where the picture comes in the list of failures
    /// @param text  what went wrong, with the name of the file
    void addFailed(std::size_t place, const std::string& text) { m_failures[place] = text; }

    /// Pictures that were not restored because the user ended the batch.
    void addLeft(std::size_t count) { m_left += count; }

    /// The failures, one on each line, then a line that counts: "197 restored, 2 failed, 1 skipped
    /// in 31 s". Parts that are 0 are left out, except for the first.
    std::string text(std::chrono::duration<double> time) const;

    /// The exit status: 0 when no picture failed, `kAllFailed` when all did, else `kSomeFailed`.
    int exitStatus() const;

    static constexpr int kAllFailed = 1;
    static constexpr int kSomeFailed = 3;

private:
    std::size_t m_restored = 0;
    std::size_t m_skipped = 0;
    std::size_t m_left = 0;
    std::map<std::size_t, std::string> m_failures;
};

} // namespace velorn
