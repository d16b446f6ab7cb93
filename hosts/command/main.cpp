// velorn: restores photographs from the command line.
#include "hosts/command/commands/CommandLine.h"
#include "hosts/command/commands/DeblurCommand.h"
#include "hosts/command/commands/EstimateCommand.h"
#include "hosts/command/commands/KernelCommand.h"
#include "hosts/command/commands/PreviewCommand.h"
#include "hosts/command/commands/TryCommand.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/standardStreams.h"
#include "hosts/command/terminal/errorLine.h"
#include "hosts/command/terminal/ErrorStream.h"
#include "hosts/command/terminal/standardDescriptors.h"

#include <csignal>
#include <iostream>
#include <new>
#include <unistd.h>

namespace {

using namespace velorn;

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;
constexpr int kSignalBase = 128;
constexpr const char* kNoOutput = "cannot write to the standard output";

/// The file that messages name for failures that carry no file name.
std::filesystem::path subjectOf(const Command& command) {
    return std::visit(
        []<class Options>(const Options& options) {
            if constexpr (requires { options.input; }) {
                return shownInput(options.input);
            } else {
                return shownOutput(options.output);
            }
        },
        command);
}

/// @returns the exit status
int run(const Command& command, const Interrupt& interrupt) {
    const bool isTerminal = isatty(STDERR_FILENO) != 0;
    if (const auto* deblur = std::get_if<DeblurOptions>(&command)) {
        ErrorStream terminal;
        return runDeblur(*deblur, interrupt, terminal, isTerminal);
    }
    if (const auto* trial = std::get_if<TryOptions>(&command)) {
        runTry(*trial, interrupt, std::cout, std::cerr, isTerminal);
    } else if (const auto* estimate = std::get_if<EstimateOptions>(&command)) {
        runEstimate(*estimate, interrupt, std::cout, std::cerr, isTerminal);
    } else if (const auto* preview = std::get_if<PreviewOptions>(&command)) {
        runPreview(*preview, interrupt, std::cerr);
    } else {
        runKernel(std::get<KernelOptions>(command), interrupt);
    }
    return 0;
}

int report(const std::string& text, int exitStatus) {
    std::cerr << errorLine(text) + "\n";
    return exitStatus;
}

/// Completes what is printed.
/// @returns `status`, or another one if it cannot be printed
int flushed(int status) {
    if (std::cout.flush()) {
        return status;
    }
    // A reader that has seen enough is no failure to report.
    return isReaderGone(STDOUT_FILENO) ? kSignalBase + SIGPIPE : report(kNoOutput, kFailed);
}

/// Writes beyond the file size limit and into a pipe that nobody reads then fail like those on a
/// full disc, instead of ending the program, and temporary files are removed.
void failWritesInsteadOfEnding() {
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

int runReported(const Command& command) {
    const Interrupt interrupt;
    try {
        return flushed(run(command, interrupt));
    } catch (const Interrupted& signal) {
        return kSignalBase + signal.signal();
    } catch (const UsageFailure& failure) {
        return report(failure.what(), kWrongUsage);
    } catch (const Failure& failure) {
        return report(failure.what(), kFailed);
    } catch (const std::bad_alloc&) {
        return report(failureIn(subjectOf(command), "out of memory").what(), kFailed);
    } catch (const std::exception& failure) {
        return report(failureIn(subjectOf(command), failure.what()).what(), kFailed);
    } catch (...) {
        return report(failureIn(subjectOf(command), "unknown error").what(), kFailed);
    }
}

} // namespace

int main(int argc, char** argv) {
    reserveStandardDescriptors();
    failWritesInsteadOfEnding();
    try {
        const auto command = parseCommandLine(argc, argv, std::cout);
        if (command) {
            return runReported(*command);
        }
        return flushed(0);
    } catch (const UsageFailure& failure) {
        return report(failure.what(), kWrongUsage);
    } catch (const std::exception& failure) {
        return report(failure.what(), kFailed);
    } catch (...) {
        return report("unknown error", kFailed);
    }
}
