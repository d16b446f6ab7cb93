#pragma once

#include <string>

namespace CLI {
class App;
class Error;
} // namespace CLI

namespace velorn {

/// The sentence that explains why the library refused a command line.
/// @param root the parser that has thrown `error`
std::string usageMessage(const CLI::Error& error, const CLI::App& root);

} // namespace velorn
