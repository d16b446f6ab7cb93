#pragma once

#include <algorithm>
#include <cstddef>
#include <mutex>

namespace restoration {

/// How far a call has come. A call consists of phases; a phase takes a share of the call and counts
/// units of work. Any thread may call any function.
class ProgressMeter {
public:
    /// Ends the current phase. The phases that follow count their shares in the part of the call
    /// from here to `until` (0..1) of the whole call.
    void beginSpan(double until) {
        const std::lock_guard lock(m_mutex);
        m_from = m_until;
        m_units = 0;
        m_spanBegin = m_until;
        m_spanEnd = until;
    }

    /// Ends the current phase and begins one of `units` units. The call has come to `until` (0..1)
    /// at the end of the new phase.
    void beginPhase(double until, std::size_t units) {
        const std::lock_guard lock(m_mutex);
        m_from = m_until;
        m_until = std::max(m_spanBegin + until * (m_spanEnd - m_spanBegin), m_from);
        m_units = units;
        m_doneUnits = 0;
        m_isOpen = false;
    }

    /// The same for work of unknown length: its units are the pieces that the team finishes. Half
    /// of the phase has passed after `expected` (at least 1) pieces, and its end is never reached.
    void beginOpenPhase(double until, std::size_t expected) {
        beginPhase(until, expected);
        const std::lock_guard lock(m_mutex);
        m_isOpen = true;
    }

    /// Counts a piece of the team.
    void countPiece() {
        const std::lock_guard lock(m_mutex);
        if (m_isOpen) {
            ++m_doneUnits;
        }
    }

    void advance(std::size_t units = 1) {
        const std::lock_guard lock(m_mutex);
        if (!m_isOpen) {
            m_doneUnits = std::min(m_doneUnits + units, m_units);
        }
    }

    /// 0..1; never falls.
    double done() const {
        const std::lock_guard lock(m_mutex);
        if (m_units == 0) {
            return m_from;
        }
        const std::size_t all = m_isOpen ? m_units + m_doneUnits : m_units;
        const double share = static_cast<double>(m_doneUnits) / static_cast<double>(all);
        return m_from + (m_until - m_from) * share;
    }

private:
    mutable std::mutex m_mutex;
    double m_from = 0.0;
    double m_until = 0.0;
    double m_spanBegin = 0.0;
    double m_spanEnd = 1.0;
    std::size_t m_units = 0;
    std::size_t m_doneUnits = 0;
    bool m_isOpen = false;
};

} // namespace restoration
