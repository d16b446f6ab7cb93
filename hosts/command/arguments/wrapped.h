#pragma once

#include <string>

namespace velorn {

/// Breaks the lines of `text` between words, so that no line has more than `width` characters
/// unless a single word has. The parts of a line keep its indentation. Every line ends with a line
/// break.
std::string wrapped(const std::string& text, std::size_t width);

} // namespace velorn
