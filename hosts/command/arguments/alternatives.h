#pragma once

#include <string>
#include <vector>

namespace velorn {

/// The names of a choice as text: "a, b or c", with `last` before the last name.
std::string alternatives(const std::vector<std::string>& names, const char* last = " or ");

} // namespace velorn
