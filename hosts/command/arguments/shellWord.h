#pragma once

#include <string>

namespace velorn {

/// `text` as one word of a shell's command line: in single quotes unless it consists of letters,
/// digits and characters that shells leave alone.
std::string shellWord(const std::string& text);

} // namespace velorn
