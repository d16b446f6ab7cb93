#include "hosts/command/terminal/ProgressBar.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace velorn {
namespace {

constexpr int kCells = 40;

std::string padded(int percent) {
    const std::string digits = std::to_string(percent);
    return std::string(3 - digits.size(), ' ') + digits;
}

} // namespace

void ProgressBar::show(int current, int limit) {
    if (!m_isShown) {
        return;
    }
    const auto share = limit < 1 ? 0 : std::int64_t{100} * current / limit;
    const int percent = static_cast<int>(std::clamp<std::int64_t>(share, 0, 100));
    if (percent == m_percent) {
        return;
    }
    m_percent = percent;
    const auto filled = static_cast<std::size_t>(kCells * percent / 100);
    m_terminal << "\r[" << std::string(filled, '#') << std::string(kCells - filled, '.') << "] "
               << padded(percent) << "%" << std::flush;
}

ProgressBar::~ProgressBar() {
    if (m_percent >= 0) {
        m_terminal << '\r' << std::string(kCells + 7, ' ') << '\r' << std::flush;
    }
}

} // namespace velorn
