#include "TrialSummary.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>

namespace velorn::tools {

void TrialSummary::count(const std::optional<BlindTrial>& found) {
    if (!found) {
        ++m_failures;
        return;
    }
    const BlindTrial& trial = *found;
    m_least = m_trials == 0 ? trial.gain() : std::min(m_least, trial.gain());
    ++m_trials;
    m_gain += trial.gain();
    m_inPlace += trial.inPlace - trial.blurred;
    m_possible += trial.possibleGain();
    m_likeness += trial.likeness;
    m_seconds += trial.seconds;
    m_withinTwo += trial.errorRatio() <= 2.0 ? 1 : 0;
    m_withinThree += trial.errorRatio() <= 3.0 ? 1 : 0;
    m_worse += trial.isWorse() ? 1 : 0;
    m_worseWarned += trial.isWorse() && trial.isWarned() ? 1 : 0;
    m_falselyWarned += !trial.isWorse() && trial.isWarned() ? 1 : 0;
}

void TrialSummary::printHeading(const std::string& subject) {
    std::cout << "| " << subject
              << " | cases | likeness | gain dB | least | in place | gain known | share | error "
                 "ratio at most 2 | at most 3 | worse | of these warned | warned, not worse | not "
                 "found | seconds "
                 "|\n|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|\n";
}

void TrialSummary::print(const std::string& name) const {
    const double trials = std::max(m_trials, 1);
    const auto percent = [&](int count) { return std::lround(100.0 * count / trials); };
    std::cout << std::fixed << "| " << name << " | " << m_trials << " | " << std::setprecision(2)
              << m_likeness / trials << " | " << m_gain / trials << " | " << m_least << " | "
              << m_inPlace / trials << " | " << m_possible / trials << " | ";
    if (m_possible > 0.0) {
        std::cout << m_gain / m_possible;
    }
    std::cout << " | " << percent(m_withinTwo) << " % | " << percent(m_withinThree) << " % | "
              << m_worse << " | " << m_worseWarned << " | " << m_falselyWarned << " | "
              << m_failures << " | " << m_seconds / trials << " |\n";
}

} // namespace velorn::tools
