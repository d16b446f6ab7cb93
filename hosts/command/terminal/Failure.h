#pragma once

#include <stdexcept>
#include <string>

namespace velorn {

/// A failure that the program reports in one line on stderr: what went wrong, and with which file.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The command line is wrong. The exit status differs from that of a failed run.
class UsageFailure : public Failure {
public:
    using Failure::Failure;
};

/// `text` on one line: line breaks and the blanks around them become one blank. Messages of
/// libraries may have several lines.
std::string onOneLine(const std::string& text);

} // namespace velorn
