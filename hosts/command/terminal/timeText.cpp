#include "hosts/command/terminal/timeText.h"

#include <algorithm>
#include <cmath>

namespace velorn {

std::string timeText(std::chrono::duration<double> time) {
    constexpr double kLongest = 1e9;
    const double seconds = std::clamp(time.count(), 0.0, kLongest);
    if (seconds < 0.95) {
        return "0." + std::to_string(std::lround(10.0 * seconds)) + " s";
    }
    if (seconds < 99.5) {
        return std::to_string(std::lround(seconds)) + " s";
    }
    const long minutes = std::lround(seconds / 60.0);
    if (minutes < 60) {
        return std::to_string(minutes) + " min";
    }
    return std::to_string(minutes / 60) + " h " + std::to_string(minutes % 60) + " min";
}

} // namespace velorn
