#pragma once

#include "hosts/command/commands/CommandLine.h"
#include "hosts/command/terminal/Failure.h"
#include "tests/hosts/command/failureText.h"

#include <sstream>
#include <string>
#include <vector>

namespace vel::test {

using CommandWords = std::vector<const char*>;

/// Parses `words` that follow the program's name. Nothing after help or version, which go to
/// `printed`.
inline std::optional<velorn::Command> parsed(CommandWords words, std::string* printed = nullptr) {
    words.insert(words.begin(), "velorn");
    std::ostringstream out;
    auto command = velorn::parseCommandLine(static_cast<int>(words.size()), words.data(), out);
    if (printed != nullptr) {
        *printed = out.str();
    }
    return command;
}

/// The options of a command line that selects the command of `Options`.
template <class Options>
Options parsedAs(CommandWords words) {
    return std::get<Options>(parsed(std::move(words)).value());
}

/// The message for a wrong command line; empty if the command line is accepted.
inline std::string usageFailureOf(CommandWords words) {
    return failureText<velorn::UsageFailure>([&] { parsed(std::move(words)); });
}

/// What `velorn WORDS...` prints to the standard output.
inline std::string printedBy(CommandWords words) {
    std::string printed;
    parsed(std::move(words), &printed);
    return printed;
}

} // namespace vel::test
