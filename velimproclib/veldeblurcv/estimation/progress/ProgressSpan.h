#pragma once

#include "velorncore10.h"

#include <cstdint>

namespace vel {

/// The estimator's share of the host's progress account.
///
/// The account and its counter belong to the host. A callback is made only when record, callback
/// and user data are all present. A span whose callback cannot be made is idle: it never moves the
/// host's counter. A span without a record is silent: all its operations are allowed and have no
/// effect, therefore no stage tests whether it has a span. Not thread-safe: one thread at a time
/// calls it.
class CProgressSpan {
public:
    /// @param record the host's account; null makes a silent span
    explicit CProgressSpan(ProgressRecord* record = nullptr) noexcept;

    /// Leaves the host's counter at the end of the share.
    ~CProgressSpan();

    CProgressSpan(const CProgressSpan&) = delete;
    CProgressSpan& operator=(const CProgressSpan&) = delete;

    /// Takes `share` (0..1) of the account's total, from the counter's present value on, divides it
    /// into `steps` steps, and calls back once with the counter plus one.
    /// @return the length of a step, 0 when no callback can be made
    int begin(float share, int steps);

    /// Moves the counter one step, at most to the end of the share.
    /// @return the callback's result, 1 when none can be made
    int advance();

    /// Moves the counter to the end of the share.
    /// @return the callback's result, 1 when none can be made
    int finish();

    /// Splits the next step into `parts` (at least 1): until `endSub`, `advance` moves by one part,
    /// at least 1.
    void beginSub(int parts) noexcept;

    /// Moves the counter, without a callback, to where the split step ends, however many parts were
    /// made, and restores the step.
    void endSub() noexcept;

private:
    bool canCall() const noexcept;
    void restAt(std::int32_t position) noexcept;
    int callBack();

    ProgressRecord* m_record;
    std::int32_t m_start;
    std::int32_t m_end;
    std::int32_t m_step;
    std::int32_t m_savedCurrent;
    std::int32_t m_savedStep;
};

} // namespace vel
