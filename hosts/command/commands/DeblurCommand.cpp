#include "hosts/command/commands/DeblurCommand.h"

#include "hosts/command/commands/KernelSearch.h"
#include "hosts/command/commands/shownProgress.h"
#include "hosts/command/files/TemporaryFile.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/kernels/KernelPicture.h"
#include "hosts/command/kernels/kernelText.h"
#include "hosts/command/library/callLibrary.h"

#include <vector>

namespace velorn {
namespace {

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

api::FoundKernel searchKernel(const ImageFile& picture, const std::filesystem::path& path,
                              const BlindSettings& settings, const Interrupt& interrupt,
                              std::ostream& terminal, bool isTerminal) {
    std::vector<api::FoundKernel> found;
    {
        ProgressBar bar(terminal, isTerminal);
        found = findKernels(picture, path, settings, interrupt, shownProgress(bar, interrupt));
    }
    return chosenKernel(found, path, settings, terminal);
}

void printKernel(const api::FoundKernel& found, int orientation, std::ostream& terminal) {
    const BlurKernel shown = asShown(blurKernelOf(found.kernel), orientation);
    terminal << "velorn: blur: " << blurText(found.report, shown, orientation) << ", confidence "
             << percentText(found.report.confidence) << '\n'
             << kernelPicture(shown);
}

/// Restores `picture` in place.
void restore(ImageFile& picture, const std::vector<api::Kernel>& kernels,
             const DeblurOptions& options, const Interrupt& interrupt, std::ostream& terminal,
             bool isTerminal) {
    const std::vector<unsigned char> profile = picture.profile();
    VelornRestoreSettings settings = options.settings;
    settings.profile = profile.empty() ? nullptr : profile.data();
    settings.profileSize = profile.size();
    const VelornPicture pixels = picture.view();
    const VelornRestoreReport report = callLibrary(options.input, interrupt, [&] {
        ProgressBar bar(terminal, isTerminal);
        return api::restore(pixels, pixels, kernels, settings, shownProgress(bar, interrupt));
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

    std::vector<api::Kernel> kernels;
    if (displayed) {
        // The user describes the picture as it is displayed; its rows may be stored in another
        // orientation.
        kernels.push_back(libraryKernel(asStored(*displayed, picture.orientation())));
    } else if (const auto* blind = std::get_if<BlindSettings>(&options.kernel)) {
        const api::FoundKernel found =
            searchKernel(picture, options.input, *blind, interrupt, terminal, isTerminal);
        kernels.push_back(found.kernel);
        if (isTerminal || options.isVerbose) {
            printKernel(found, picture.orientation(), terminal);
        }
    }
    restore(picture, kernels, options, interrupt, terminal, isTerminal);
    target.write(picture.encode(options.output));
    interrupt.check();
    target.commit();
}

} // namespace velorn
