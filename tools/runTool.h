#pragma once

#include "hosts/command/arguments/ArgumentParser.h"

#include <exception>
#include <iostream>
#include <string>

namespace velorn::tools {

/// The body of a program's main function: parses the arguments, prints the help if it is asked for,
/// and calls `work` otherwise. Failures are written to standard error after `name`.
/// @returns the exit code: 0, or 1 after a failure
template <class Work>
int runTool(const std::string& name, ArgumentParser& parser, int argc, char** argv,
            const Work& work) {
    try {
        if (parser.parse({argv + 1, argv + argc}, std::cout)) {
            work();
        }
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << name << ": " << failure.what() << '\n';
        return 1;
    }
}

} // namespace velorn::tools
