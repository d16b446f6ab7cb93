#include "hosts/command/commands/EstimateCommand.h"

#include "hosts/command/commands/encodedPicture.h"
#include "hosts/command/commands/KernelSearch.h"
#include "hosts/command/commands/shownProgress.h"
#include "hosts/command/files/OutputFile.h"
#include "hosts/command/files/standardStreams.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/kernels/KernelPicture.h"
#include "hosts/command/kernels/kernelText.h"
#include "hosts/command/options/FormatOption.h"
#include "hosts/command/sheet/CandidateSheet.h"
#include "hosts/command/terminal/slicedProgress.h"

#include <optional>
#include <sstream>

namespace velorn {
namespace {

/// The part of the progress that a search takes when a sheet follows.
constexpr double kSearchBeforeSheet = 0.5;

/// An output that is opened before the long work, so that one that cannot be written fails at once.
class Output {
public:
    explicit Output(const std::filesystem::path& path) {
        if (!path.empty()) {
            m_file.emplace(path);
        }
    }
    bool isWanted() const { return m_file.has_value(); }
    void write(const std::vector<unsigned char>& bytes) { m_file->write(bytes); }
    void commit() {
        if (m_file) {
            m_file->commit();
        }
    }

private:
    std::optional<OutputFile> m_file;
};

void checkOutputs(const EstimateOptions& options) {
    if (!options.output.empty()) {
        KernelFile::checkWritable(kernelName(options.output, options.format));
    }
    if (!options.sheet.empty()) {
        outputFormat(options.sheet, options.sheetFormat);
    }
}

void print(const api::FoundKernel& found, const BlurKernel& shown, const EstimateOptions& options,
           int orientation, std::ostream& out) {
    const VelornFindReport& report = found.report;
    out << "blur:        " << blurText(report, shown, orientation) << '\n'
        << "kernel:      " << shown.size().text() << ", candidate " << options.blind.candidate
        << " of " << report.candidates << '\n'
        << "confidence:  " << percentText(report.confidence) << '\n';
    if (report.parts > 1) {
        out << "parts:       " << report.parts << ", agreement "
            << percentText(report.partAgreement) << '\n';
    }
    out << "misfit:      " << misfitText(report) << '\n' << kernelPicture(shown) << std::flush;
}

struct Found {
    api::FoundKernel chosen;
    std::optional<ImageFile> sheet;
};

/// Finds the kernel, and draws the sheet if there is to be one.
Found findAndDraw(const ImageFile& picture, const EstimateOptions& options,
                  const Interrupt& interrupt, std::ostream& warnings, std::ostream& terminal,
                  bool isTerminal) {
    const std::filesystem::path name = shownInput(options.input);
    ProgressBar bar(terminal, isTerminal);
    const api::Progress progress = shownProgress(bar, interrupt);
    const bool wantsSheet = !options.sheet.empty();
    const double searched = wantsSheet ? kSearchBeforeSheet : 1.0;
    const auto candidates = findKernels(picture, name, options.blind, interrupt,
                                        slicedProgress(progress, 0.0, searched));
    Found found{chosenKernel(candidates, name, options.blind, warnings), {}};
    if (wantsSheet) {
        const CandidateSheet sheet(picture, name, options.blind.look, options.blind.threads,
                                   interrupt);
        found.sheet = sheet.draw(candidates, slicedProgress(progress, searched, 1.0));
    }
    return found;
}

} // namespace

void runEstimate(const EstimateOptions& options, const Interrupt& interrupt, std::ostream& out,
                 std::ostream& terminal, bool isTerminal) {
    checkOutputs(options);
    const ImageFile picture = ImageFile::read(options.input, options.maxPixels);
    Output kernelOutput(options.output);
    Output sheetOutput(options.sheet);
    interrupt.check();

    std::ostringstream warnings; // the bar has the line of the terminal to itself
    const Found found = findAndDraw(picture, options, interrupt, warnings, terminal, isTerminal);
    terminal << warnings.str();
    // Kernel files refer to the picture as it is displayed.
    const BlurKernel shown = asShown(blurKernelOf(found.chosen.kernel), picture.orientation());
    if (kernelOutput.isWanted()) {
        kernelOutput.write(KernelFile::encode(shown, kernelName(options.output, options.format)));
    }
    if (found.sheet) {
        sheetOutput.write(encodedPicture(*found.sheet, options.sheet, options.sheetFormat));
    }
    interrupt.check();
    kernelOutput.commit();
    sheetOutput.commit();
    // Nothing but the file goes to the standard output if one is written there.
    const bool isOutTaken = isStandardStream(options.output) || isStandardStream(options.sheet);
    print(found.chosen, shown, options, picture.orientation(), isOutTaken ? terminal : out);
}

} // namespace velorn
