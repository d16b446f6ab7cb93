#include "hosts/command/batch/BatchReport.h"

#include "hosts/command/terminal/errorLine.h"
#include "hosts/command/terminal/timeText.h"

namespace velorn {

std::string BatchReport::text(std::chrono::duration<double> time) const {
    std::string lines;
    for (const auto& [place, failure] : m_failures) {
        lines += errorLine(failure) + "\n";
    }
    lines += "velorn: " + std::to_string(m_restored) + " restored";
    if (!m_failures.empty()) {
        lines += ", " + std::to_string(m_failures.size()) + " failed";
    }
    if (m_skipped > 0) {
        lines += ", " + std::to_string(m_skipped) + " skipped";
    }
    if (m_left > 0) {
        lines += ", " + std::to_string(m_left) + " left";
    }
    return lines + " in " + timeText(time) + "\n";
}

int BatchReport::exitStatus() const {
    if (m_failures.empty()) {
        return 0;
    }
    return m_restored + m_skipped == 0 ? kAllFailed : kSomeFailed;
}

} // namespace velorn
