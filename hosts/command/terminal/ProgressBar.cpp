#include "hosts/command/terminal/ProgressBar.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace velorn {
namespace {

constexpr int kCells = 40;

std::string padded(int percent) {
    const std::string digits = std::to_string(percent);
    return std::string(3 - digits.size(), ' ') + digits;
}

} // namespace

void ProgressBar::show(int current, int limit, const std::string& note) {
    if (!m_isShown) {
        return;
    }
    const auto share = limit < 1 ? 0 : std::int64_t{100} * current / limit;
    const int percent = static_cast<int>(std::clamp<std::int64_t>(share, 0, 100));
    const auto filled = static_cast<std::size_t>(kCells * percent / 100);
    std::string line(1, '[');
    line.append(filled, '#').append(kCells - filled, '.').append("] ");
    line.append(padded(percent)).append("%").append(note);
    if (line == m_line) {
        return;
    }
    const std::size_t leftover = m_line.size() - std::min(m_line.size(), line.size());
    m_terminal << std::string(1, '\r').append(line).append(leftover, ' ') << std::flush;
    m_line = std::move(line);
}

void ProgressBar::clear() {
    if (!m_line.empty()) {
        m_terminal << std::string(1, '\r').append(m_line.size(), ' ').append(1, '\r') << std::flush;
        m_line.clear();
    }
}

} // namespace velorn
