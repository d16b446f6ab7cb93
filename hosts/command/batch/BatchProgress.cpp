#include "hosts/command/batch/BatchProgress.h"

#include "hosts/command/terminal/timeText.h"

#include <algorithm>
#include <cmath>

namespace velorn {

void BatchProgress::set(std::size_t place, double done) {
    m_shares[place] = static_cast<float>(std::clamp(done, 0.0, 1.0));
}

void BatchProgress::finish(std::size_t place) {
    m_shares[place] = 1.0f;
    ++m_finished;
}

std::string BatchProgress::note(double share) const {
    // Earlier, the estimate would be far off.
    constexpr double kLeastTime = 1.0;
    std::string text(1, ' ');
    text.append(std::to_string(m_finished)).append("/").append(std::to_string(m_shares.size()));
    const double passed = time().count();
    if (passed >= kLeastTime && share > 0.0) {
        const double left = std::ceil(passed * (1.0 - share) / share);
        text += ", " + timeText(std::chrono::duration<double>(std::max(left, 1.0))) + " left";
    }
    return text;
}

double BatchProgress::left() const {
    double left = 0.0;
    for (const auto& share : m_shares) {
        left += 1.0 - static_cast<double>(share.load());
    }
    return left;
}

void BatchProgress::draw() {
    constexpr int kUnits = 1000;
    const double share =
        1.0 - left() / static_cast<double>(std::max<std::size_t>(m_shares.size(), 1));
    const std::lock_guard lock(m_mutex);
    m_bar.show(static_cast<int>(share * kUnits), kUnits, note(share));
}

void BatchProgress::print(const std::string& text) {
    const std::lock_guard lock(m_mutex);
    m_bar.clear();
    m_terminal << text << std::flush;
}

} // namespace velorn
