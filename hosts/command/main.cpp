// velorn: restores photographs from the command line.
#include "hosts/command/commands/DeblurCommand.h"
#include "hosts/command/commands/EstimateCommand.h"
#include "hosts/command/commands/KernelCommand.h"
#include "hosts/command/commands/Options.h"
#include "hosts/command/commands/PreviewCommand.h"
#include "hosts/command/terminal/Failure.h"

#include <csignal>
#include <iostream>
#include <new>
#include <unistd.h>

namespace {

using namespace velorn;

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;
constexpr int kSignalBase = 128;

/// The file that a failure without a text of its own is told with.
std::filesystem::path subjectOf(const Command& command) {
    return std::visit(
        []<class Options>(const Options& options) {
            if constexpr (requires { options.input; }) {
                return options.input;
            } else {
                return options.output;
            }
        },
        command);
}

void run(const Command& command, const Interrupt& interrupt) {
    const bool isTerminal = isatty(STDERR_FILENO) != 0;
    if (const auto* deblur = std::get_if<DeblurOptions>(&command)) {
        runDeblur(*deblur, interrupt, std::cerr, isTerminal);
    } else if (const auto* estimate = std::get_if<EstimateOptions>(&command)) {
        runEstimate(*estimate, interrupt, std::cout, std::cerr, isTerminal);
    } else if (const auto* preview = std::get_if<PreviewOptions>(&command)) {
        runPreview(*preview, interrupt, std::cerr);
    } else {
        runKernel(std::get<KernelOptions>(command), interrupt);
    }
}

int tell(const std::string& text, int exitCode) {
    std::cerr << "velorn: " + onOneLine(text) + "\n";
    return exitCode;
}

int runTold(const Command& command) {
    const Interrupt interrupt;
    // A file size limit is then an error of the write, like a full disc, and not the program's end.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        run(command, interrupt);
        return 0;
    } catch (const Interrupted& signal) {
        return kSignalBase + signal.signal();
    } catch (const Failure& failure) {
        return tell(failure.what(), kFailed);
    } catch (const std::bad_alloc&) {
        return tell(quoted(subjectOf(command)) + ": out of memory", kFailed);
    } catch (const std::exception& failure) {
        return tell(quoted(subjectOf(command)) + ": " + failure.what(), kFailed);
    } catch (...) {
        return tell(quoted(subjectOf(command)) + ": failed for an unknown reason", kFailed);
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        const auto command = parseCommandLine(argc, argv, std::cout);
        if (command) {
            return runTold(*command);
        }
        return std::cout.flush() ? 0 : tell("cannot write to the standard output", kFailed);
    } catch (const UsageFailure& failure) {
        return tell(failure.what(), kWrongUsage);
    } catch (const std::exception& failure) {
        return tell(failure.what(), kFailed);
    } catch (...) {
        return tell("failed for an unknown reason", kFailed);
    }
}
