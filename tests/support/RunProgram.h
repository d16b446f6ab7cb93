#pragma once

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <pty.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace vel::test {

/// Exit status and output of a program.
struct ProgramResult {
    /// The exit status, -1 if a signal ended the program.
    int exitStatus = -1;
    std::string output;
    std::string errors;
};

namespace detail {

inline std::string drain(int descriptor, const std::function<void()>& onFirst = {}) {
    std::string text;
    char buffer[4096];
    for (;;) {
        const ssize_t count = read(descriptor, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) { // reading a terminal fails when its other end is closed
            return text;
        }
        if (text.empty() && onFirst) {
            onFirst();
        }
        text.append(buffer, static_cast<std::size_t>(count));
    }
}

[[noreturn]] inline void become(const std::vector<std::string>& words) {
    // The program would inherit these signals as ignored if the process that runs the tests does.
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE}) {
        std::signal(signal, SIG_DFL);
    }
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(127);
}

inline int exitStatusOf(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace detail

/// Runs a program with its outputs in pipes. Calls `inChild` in the new process before it starts.
inline ProgramResult runProgram(const std::vector<std::string>& words,
                                const std::function<void()>& inChild = {}) {
    int out[2];
    int err[2];
    if (pipe(out) != 0 || pipe(err) != 0) {
        std::abort();
    }
    const pid_t child = fork();
    if (child == 0) {
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        for (const int descriptor : {out[0], out[1], err[0], err[1]}) {
            close(descriptor);
        }
        if (inChild) {
            inChild();
        }
        detail::become(words);
    }
    close(out[1]);
    close(err[1]);
    // The programs print little, therefore one pipe does not fill while the other is read.
    ProgramResult result;
    result.output = detail::drain(out[0]);
    result.errors = detail::drain(err[0]);
    close(out[0]);
    close(err[0]);
    result.exitStatus = detail::exitStatusOf(child);
    return result;
}

/// Runs a program on a terminal of its own and sends `signal` (unless 0) when it first prints.
/// `output` holds both outputs.
inline ProgramResult runOnTerminal(const std::vector<std::string>& words, int signal) {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        detail::become(words);
    }
    ProgramResult result;
    result.output = detail::drain(terminal, [&] {
        if (signal != 0) {
            kill(child, signal);
        }
    });
    close(terminal);
    result.exitStatus = detail::exitStatusOf(child);
    return result;
}

} // namespace vel::test
