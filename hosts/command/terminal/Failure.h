#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace velorn {

/// A failure that the user is told in one line on stderr: what went wrong, and with which file.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The command line cannot be followed. Its exit code differs from that of a failed run.
class UsageFailure : public Failure {
public:
    using Failure::Failure;
};

/// The user pressed Ctrl-C, or the system asked the program to end.
class Interrupted : public std::exception {
public:
    explicit Interrupted(int signal) : m_signal(signal) {}
    int signal() const noexcept { return m_signal; }
    const char* what() const noexcept override { return "interrupted"; }

private:
    int m_signal;
};

/// `text` with every run of line breaks and blanks around them made one blank, so that messages of
/// libraries fit a line.
std::string onOneLine(const std::string& text);

/// The name of a file as messages show it.
std::string quoted(const std::filesystem::path& path);

/// Ends with a failure when there is something at `path` that is not a file with an end: a folder,
/// a device, a pipe. Whether a file exists and may be read, opening it tells.
void checkReadable(const std::filesystem::path& path);

} // namespace velorn
