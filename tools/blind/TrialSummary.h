#pragma once

#include "BlindTrial.h"

#include <optional>
#include <string>

namespace velorn::tools {

/// Counts and means over trials, printed as a row of a table.
class TrialSummary {
public:
    /// @param found empty when the search found no kernel
    void count(const std::optional<BlindTrial>& found);

    static void printHeading(const std::string& subject);
    void print(const std::string& name) const;

private:
    int m_trials = 0;
    int m_failures = 0;
    int m_withinTwo = 0;
    int m_withinThree = 0;
    int m_worse = 0;
    int m_worseWarned = 0;
    int m_falselyWarned = 0;
    double m_gain = 0.0;
    double m_least = 0.0;
    double m_inPlace = 0.0;
    double m_possible = 0.0;
    double m_likeness = 0.0;
    double m_seconds = 0.0;
};

} // namespace velorn::tools
