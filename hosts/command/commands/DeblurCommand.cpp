#include "hosts/command/commands/DeblurCommand.h"

#include "hosts/command/commands/KernelSearch.h"
#include "hosts/command/commands/omittedMetadata.h"
#include "hosts/command/commands/shownProgress.h"
#include "hosts/command/files/TemporaryFile.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/kernels/KernelPicture.h"
#include "hosts/command/kernels/kernelText.h"
#include "hosts/command/library/callLibrary.h"
#include "hosts/command/pictures/Orientation.h"

#include <variant>
#include <vector>

namespace velorn {
namespace {

/// The blur of a picture, for its rows and columns as stored: no kernel or one, or those of parts.
using PictureBlur = std::variant<std::vector<api::Kernel>, api::KernelGrid>;

/// The kernel for the picture as displayed; nothing where it is found later or not needed.
std::optional<BlurKernel> knownKernel(const KernelSource& source) {
    if (const auto* blur = std::get_if<AnalyticBlur>(&source)) {
        return makeKernel(*blur);
    }
    if (const auto* file = std::get_if<KernelPath>(&source)) {
        return KernelFile::read(file->path, file->scale);
    }
    return std::nullopt;
}

void printReport(const VelornRestoreReport& report, std::ostream& terminal) {
    terminal << "velorn: noise " << report.noise << " levels";
    if (report.strength > 0.0f) {
        terminal << ", strength " << report.strength << ", alpha " << report.alpha << ", limit "
                 << report.limit
                 << (report.light == VELORN_LIGHT_LINEAR ? ", in linear light" : "");
    }
    if (report.chromaStrength > 0.0f) {
        terminal << ", strength of chroma " << report.chromaStrength;
    }
    if (report.clippedShare > 0.0) {
        terminal << ", clipped " << 100.0 * report.clippedShare << " %";
    }
    terminal << '\n';
}

void printKernel(const api::FoundKernel& found, int orientation, std::ostream& terminal) {
    const BlurKernel shown = asShown(blurKernelOf(found.kernel), orientation);
    terminal << "velorn: blur: " << blurText(found.report, shown, orientation) << ", confidence "
             << percentText(found.report.confidence) << '\n'
             << kernelPicture(shown);
}

void printGrid(const api::KernelGrid& grid, const VelornFindReport& report, int orientation,
               std::ostream& terminal) {
    const KernelSize shown =
        asStored(KernelSize{grid.columns(), grid.rows()}, Orientation::inverse(orientation));
    terminal << "velorn: blur: differs across the picture, " << shown.text()
             << " kernels, confidence " << percentText(report.confidence) << '\n';
}

/// What a search needs and where it reports.
struct SearchCall {
    const ImageFile& picture;
    const DeblurOptions& options;
    const BlindSettings& settings;
    const Interrupt& interrupt;
    std::ostream& terminal;
    bool isTerminal;

    bool printsBlur() const { return isTerminal || options.isVerbose; }

    /// `find` of `KernelSearch.h`, with a progress bar that is cleared afterwards.
    template <class Find>
    auto found(const Find& find) const {
        ProgressBar bar(terminal, isTerminal);
        return find(picture, options.input, settings, interrupt, shownProgress(bar, interrupt));
    }
};

PictureBlur oneKernel(const SearchCall& call) {
    const api::FoundKernel chosen =
        chosenKernel(call.found(findKernels), call.options.input, call.settings, call.terminal);
    if (call.printsBlur()) {
        printKernel(chosen, call.picture.orientation(), call.terminal);
    }
    return std::vector<api::Kernel>{chosen.kernel};
}

PictureBlur kernelsOfParts(const SearchCall& call) {
    const api::FoundKernelGrid found = call.found(findLocalKernels);
    checkLocalKernels(found, call.options.input, call.settings, call.terminal);
    const int orientation = call.picture.orientation();
    if (isLocal(found.grid)) {
        if (call.printsBlur()) {
            printGrid(found.grid, found.report, orientation, call.terminal);
        }
        return found.grid;
    }
    if (call.options.isVerbose) {
        call.terminal << "velorn: the blur does not differ reliably across the picture: one kernel "
                         "is used for all of it\n";
    }
    if (call.printsBlur()) {
        printKernel({found.grid.at(0, 0), found.report}, orientation, call.terminal);
    }
    return found.grid;
}

/// Restores `picture` in place.
void restore(ImageFile& picture, const PictureBlur& blur, const DeblurOptions& options,
             const Interrupt& interrupt, std::ostream& terminal, bool isTerminal) {
    const std::vector<unsigned char> profile = picture.profile();
    VelornRestoreSettings settings = options.settings;
    settings.profile = profile.empty() ? nullptr : profile.data();
    settings.profileSize = profile.size();
    const VelornPicture pixels = picture.view();
    const VelornRestoreReport report = callLibrary(options.input, interrupt, [&] {
        ProgressBar bar(terminal, isTerminal);
        const api::Progress progress = shownProgress(bar, interrupt);
        if (const auto* grid = std::get_if<api::KernelGrid>(&blur)) {
            return api::restoreLocal(pixels, pixels, *grid, settings, progress);
        }
        return api::restore(pixels, pixels, std::get<std::vector<api::Kernel>>(blur), settings,
                            progress);
    });
    if (options.isVerbose) {
        printReport(report, terminal);
    }
}

} // namespace

void runDeblur(const DeblurOptions& options, const Interrupt& interrupt, std::ostream& terminal,
               bool isTerminal) {
    ImageFile::checkWritable(options.output);
    const std::optional<BlurKernel> displayed = knownKernel(options.kernel);
    ImageFile picture = ImageFile::read(options.input);
    // Opened before the long work, so that an output that cannot be written fails at once.
    TemporaryFile target(options.output);
    interrupt.check();

    PictureBlur blur;
    if (displayed) {
        // The user describes the picture as it is displayed; its rows may be stored in another
        // orientation.
        const BlurKernel stored = asStored(*displayed, picture.orientation());
        blur = std::vector<api::Kernel>{libraryKernel(stored)};
    } else if (const auto* blind = std::get_if<BlindSettings>(&options.kernel)) {
        const SearchCall call{picture, options, *blind, interrupt, terminal, isTerminal};
        blur = blind->isLocal ? kernelsOfParts(call) : oneKernel(call);
    }
    restore(picture, blur, options, interrupt, terminal, isTerminal);
    const WrittenMetadata written = picture.encodeWithReport(options.output);
    warnOfOmittedMetadata(written.omitted, options.output, terminal);
    target.write(written.file);
    interrupt.check();
    target.commit();
}

} // namespace velorn
