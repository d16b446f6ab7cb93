#pragma once

#include <string>
#include <vector>

namespace velorn {

/// The shortest digits that read back as `value`, without an exponent.
std::string numberText(float value);

/// The numbers in `text`, with single commas between them; empty when it is anything else.
std::vector<float> numberList(const std::string& text);

} // namespace velorn
