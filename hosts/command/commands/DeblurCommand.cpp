#include "hosts/command/commands/DeblurCommand.h"

#include "hosts/command/batch/availableMemory.h"
#include "hosts/command/batch/runBatch.h"
#include "hosts/command/commands/deblurPicture.h"
#include "hosts/command/commands/shownProgress.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/standardStreams.h"
#include "hosts/command/options/FormatOption.h"
#include "hosts/command/pictures/codecThreads.h"

#include <algorithm>
#include <filesystem>
#include <thread>

namespace velorn {
namespace {

namespace fs = std::filesystem;

/// The part of the available memory that pictures may take: other programs need some, too.
constexpr double kMemoryShare = 0.75;

/// The number of threads in `settings`; one for each processor if it is 0.
int threadCount(const VelornRestoreSettings& settings) {
    return settings.threads > 0
               ? settings.threads
               : static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
}

void createFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        throw Failure("cannot create the folder " + quoted(folder) + ": " + error.message());
    }
}

/// Checks that files of the format of `output` can have the requested depth.
void checkEncoding(const fs::path& output, const FileSettings& settings) {
    const Format& format = outputFormat(output, settings.format);
    naming(shownOutput(output), [&] { checkBits(format, settings.encoding.bits.value_or(8)); });
}

/// Whether the output is a file that exists and is not to be replaced.
bool keepsOutput(const DeblurOptions& options) {
    std::error_code ignored;
    return options.existing != Existing::Replace && !isStandardStream(options.output) &&
           fs::exists(options.output, ignored);
}

/// The pictures of the batch. Those whose output cannot have the requested depth fail at once.
std::vector<PlannedPicture> checkedPlan(const DeblurOptions& options) {
    std::vector<PlannedPicture> plan = plannedPictures(*options.batch);
    for (PlannedPicture& picture : plan) {
        if (picture.failure || picture.isSkipped) {
            continue;
        }
        try {
            checkEncoding(picture.files.output, options.files);
        } catch (const Failure& failure) {
            picture.failure = failure.what();
        }
    }
    return plan;
}

int deblurMany(const DeblurOptions& options, const Interrupt& interrupt, std::ostream& terminal,
               bool isTerminal) {
    const std::vector<PlannedPicture> plan = checkedPlan(options);
    const std::optional<BlurKernel> displayed = knownKernel(options.kernel);
    createFolder(options.batch->folder);
    const int threads = threadCount(options.settings);
    setCodecThreads(plan.size() > 1 ? 1 : threads);
    const BatchSettings settings{
        threads, static_cast<std::uint64_t>(kMemoryShare * static_cast<double>(availableMemory())),
        options.isVerbose};
    const RestorePicture restore = [&](const PictureFiles& files, const PictureContext& context) {
        DeblurOptions one = options;
        one.input = files.input;
        one.output = files.output;
        if (one.isVerbose) {
            context.print("velorn: " + quoted(files.input) + " to " + quoted(files.output) + "\n");
        }
        deblurPicture(one, displayed, context, interrupt);
    };
    return runBatch(plan, settings, restore, interrupt, terminal, isTerminal);
}

int deblurOne(const DeblurOptions& options, const Interrupt& interrupt, std::ostream& terminal,
              bool isTerminal) {
    if (keepsOutput(options)) {
        if (options.existing == Existing::Refuse) {
            throw outputExists(options.output);
        }
        if (options.isVerbose) {
            terminal << "velorn: " + quoted(options.output) + " exists and is skipped\n";
        }
        return 0;
    }
    checkEncoding(options.output, options.files);
    setCodecThreads(threadCount(options.settings));
    ProgressBar bar(terminal, isTerminal);
    PictureContext context;
    context.reserve = [&](std::uint64_t) { return options.settings.threads; };
    context.progress = shownProgress(bar, interrupt);
    context.print = [&](const std::string& lines) {
        bar.clear();
        terminal << lines << std::flush;
    };
    context.printsBlur = isTerminal || options.isVerbose;
    deblurPicture(options, knownKernel(options.kernel), context, interrupt);
    return 0;
}

} // namespace

int runDeblur(const DeblurOptions& options, const Interrupt& interrupt, std::ostream& terminal,
              bool isTerminal) {
    return options.batch ? deblurMany(options, interrupt, terminal, isTerminal)
                         : deblurOne(options, interrupt, terminal, isTerminal);
}

} // namespace velorn
