#include "hosts/command/commands/deblurPicture.h"

#include "hosts/command/batch/restorationMemory.h"
#include "hosts/command/commands/KernelSearch.h"
#include "hosts/command/commands/omittedMetadata.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/OutputFile.h"
#include "hosts/command/files/standardStreams.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/kernels/KernelPicture.h"
#include "hosts/command/kernels/kernelText.h"
#include "hosts/command/library/callLibrary.h"
#include "hosts/command/options/FormatOption.h"
#include "hosts/command/pictures/Orientation.h"
#include "hosts/command/terminal/slicedProgress.h"

#include <sstream>
#include <variant>
#include <vector>

namespace velorn {
namespace {

/// The blur of a picture, for its rows and columns as stored: no kernel or one, or those of parts.
using PictureBlur = std::variant<std::vector<api::Kernel>, api::KernelGrid>;

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

/// The share of a search in the progress of a picture.
constexpr double kSearchShare = 0.7;

/// What a search needs and where it reports.
struct SearchCall {
    const ImageFile& picture;
    const DeblurOptions& options;
    const BlindSettings& settings;
    const Interrupt& interrupt;
    const PictureContext& context;
    std::ostream& terminal;

    /// `find` of `KernelSearch.h`.
    template <class Find>
    auto found(const Find& find) const {
        return find(picture, shownInput(options.input), settings, interrupt,
                    slicedProgress(context.progress, 0.0, kSearchShare));
    }
};

PictureBlur oneKernel(const SearchCall& call) {
    const api::FoundKernel chosen = chosenKernel(
        call.found(findKernels), shownInput(call.options.input), call.settings, call.terminal);
    if (call.context.printsBlur) {
        printKernel(chosen, call.picture.orientation(), call.terminal);
    }
    return std::vector<api::Kernel>{chosen.kernel};
}

PictureBlur kernelsOfParts(const SearchCall& call) {
    const api::FoundKernelGrid found = call.found(findLocalKernels);
    checkLocalKernels(found, shownInput(call.options.input), call.settings, call.terminal);
    const int orientation = call.picture.orientation();
    if (isLocal(found.grid)) {
        if (call.context.printsBlur) {
            printGrid(found.grid, found.report, orientation, call.terminal);
        }
        return found.grid;
    }
    if (call.options.isVerbose) {
        call.terminal << "velorn: the blur does not differ reliably across the picture: one kernel "
                         "is used for all of it\n";
    }
    if (call.context.printsBlur) {
        printKernel({found.grid.at(0, 0), found.report}, orientation, call.terminal);
    }
    return found.grid;
}

/// The blur of `picture`: `displayed` if it is known, else found in the picture if the options say
/// so, else none.
PictureBlur blurOfPicture(const ImageFile& picture, const std::optional<BlurKernel>& displayed,
                          const DeblurOptions& options, const PictureContext& context, int threads,
                          const Interrupt& interrupt) {
    if (displayed) {
        // The user describes the picture as it is displayed; its rows may be stored in another
        // orientation.
        const BlurKernel stored = asStored(*displayed, picture.orientation());
        return std::vector<api::Kernel>{libraryKernel(stored)};
    }
    const auto* blind = std::get_if<BlindSettings>(&options.kernel);
    if (blind == nullptr) {
        return {};
    }
    BlindSettings settings = *blind;
    settings.threads = threads;
    std::ostringstream lines;
    const SearchCall call{picture, options, settings, interrupt, context, lines};
    PictureBlur blur = settings.isLocal ? kernelsOfParts(call) : oneKernel(call);
    context.print(lines.str());
    return blur;
}

/// Restores `picture` in place.
void restore(ImageFile& picture, const PictureBlur& blur, const DeblurOptions& options,
             const PictureContext& context, int threads, const Interrupt& interrupt) {
    const std::vector<unsigned char> profile = picture.profile();
    VelornRestoreSettings settings = options.settings;
    settings.profile = profile.empty() ? nullptr : profile.data();
    settings.profileSize = profile.size();
    settings.threads = threads;
    const VelornPicture pixels = picture.view();
    const bool isBlind = std::holds_alternative<BlindSettings>(options.kernel);
    const api::Progress progress =
        slicedProgress(context.progress, isBlind ? kSearchShare : 0.0, 1.0);
    const VelornRestoreReport report = callLibrary(shownInput(options.input), interrupt, [&] {
        if (const auto* grid = std::get_if<api::KernelGrid>(&blur)) {
            return api::restoreLocal(pixels, pixels, *grid, settings, progress);
        }
        return api::restore(pixels, pixels, std::get<std::vector<api::Kernel>>(blur), settings,
                            progress);
    });
    if (options.isVerbose) {
        std::ostringstream lines;
        printReport(report, lines);
        context.print(lines.str());
    }
}

std::uint64_t memoryFor(const ImageFile& picture, const DeblurOptions& options) {
    const bool isSixteenBit = std::holds_alternative<std::vector<std::uint16_t>>(picture.samples());
    return restorationMemory(picture.width(), picture.height(), picture.channels(),
                             isSixteenBit ? 16 : 8,
                             std::holds_alternative<BlindSettings>(options.kernel));
}

/// Reads the picture and checks that the file to write can hold it.
ImageFile readPicture(const DeblurOptions& options, const Format& format) {
    ImageFile picture = ImageFile::read(options.input, options.files.maxPixels);
    naming(shownOutput(options.output), [&] { checkSides(format, picture.shape()); });
    if (options.files.encoding.bits == 16 || format.isLinear) {
        picture.setBits(16);
    }
    return picture;
}

/// The bytes of the file to write. Warns of what the file does not hold.
std::vector<unsigned char> encoded(const ImageFile& picture, const Format& format,
                                   const DeblurOptions& options, const PictureContext& context) {
    WrittenMetadata written = naming(shownOutput(options.output), [&] {
        return picture.encode(format, options.files.encoding);
    });
    std::ostringstream warnings;
    warnOfOmittedMetadata(written.omitted, shownOutput(options.output), warnings);
    context.print(warnings.str());
    return std::move(written.file);
}

} // namespace

std::optional<BlurKernel> knownKernel(const KernelSource& source) {
    if (const auto* blur = std::get_if<AnalyticBlur>(&source)) {
        return makeKernel(*blur);
    }
    if (const auto* file = std::get_if<KernelPath>(&source)) {
        return KernelFile::read(file->path, file->scale);
    }
    return std::nullopt;
}

void deblurPicture(const DeblurOptions& options, const std::optional<BlurKernel>& displayed,
                   const PictureContext& context, const Interrupt& interrupt) {
    const Format& format = outputFormat(options.output, options.files.format);
    ImageFile picture = readPicture(options, format);
    // Opened before the long work, so that an output that cannot be written fails at once.
    OutputFile target(options.output);
    interrupt.check();

    const int threads = context.reserve(memoryFor(picture, options));
    const PictureBlur blur =
        blurOfPicture(picture, displayed, options, context, threads, interrupt);
    restore(picture, blur, options, context, threads, interrupt);
    target.write(encoded(picture, format, options, context));
    interrupt.check();
    if (options.existing == Existing::Replace) {
        target.commit();
    } else {
        target.commitNew();
    }
}

} // namespace velorn
