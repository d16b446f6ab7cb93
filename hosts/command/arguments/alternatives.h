#pragma once

#include <string>
#include <vector>

namespace velorn {

/// The names of a choice as text: "a, b or c".
std::string alternatives(const std::vector<std::string>& names);

} // namespace velorn
