#pragma once

#include <string>
#include <vector>

namespace velorn {

/// The shortest decimal text without exponent that reads back as `value`.
std::string numberText(float value);

/// The numbers of a list such as `1,2.5,-3`: single commas, no blanks. Empty when `text` is not
/// such a list.
std::vector<float> numberList(const std::string& text);

} // namespace velorn
