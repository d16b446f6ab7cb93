#pragma once

#include "hosts/command/arguments/CommandDescription.h"

#include <string>

namespace velorn {

// Scripts that make a shell complete commands, options, values to choose from, and names of files
// of `program`.

/// For bash 4.4 and later.
std::string bashCompletion(const CommandDescription& program);

/// For zsh: a function for a folder of its `fpath`, named "_" and the program's name.
std::string zshCompletion(const CommandDescription& program);

/// For fish 3 and later.
std::string fishCompletion(const CommandDescription& program);

} // namespace velorn
