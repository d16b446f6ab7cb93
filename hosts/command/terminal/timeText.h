#pragma once

#include <chrono>
#include <string>

namespace velorn {

/// A time for people: "0.4 s", "31 s", "12 min", "3 h 20 min".
std::string timeText(std::chrono::duration<double> time);

} // namespace velorn
