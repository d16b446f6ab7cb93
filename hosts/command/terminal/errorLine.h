#pragma once

#include <cstddef>
#include <string>

namespace velorn {

/// The largest number of characters in a line that reports an error or a warning.
inline constexpr std::size_t kLongestErrorLine = 300;

/// `text` in UTF-8 without control characters and invalid bytes: each becomes "?".
std::string printable(const std::string& text);

/// `text` with at most `limit` characters, at least 3: "..." replaces characters in the middle.
std::string shortened(const std::string& text, std::size_t limit);

/// A word of the command line in single quotes, as messages show it: printable, and shortened in
/// the middle if it is long.
std::string quotedWord(const std::string& word);

/// The line, without its end, that reports `text`: "velorn: TEXT" on one line, printable, and with
/// at most `kLongestErrorLine` characters.
std::string errorLine(const std::string& text);

} // namespace velorn
