#include "hosts/command/commands/KernelSearch.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/kernels/kernelText.h"
#include "hosts/command/library/callLibrary.h"
#include "hosts/command/pictures/Orientation.h"

namespace velorn {
namespace {

/// Below this confidence a restoration does harm more often than not.
constexpr float kUncertain = 0.5f;
/// Below this likeness the kernels of different parts are different blurs: it was 0.77 and more in
/// pictures of one blur (docs/blind-restoration.md).
constexpr float kSameBlur = 0.7f;

VelornRegion storedRegion(const PictureArea& look, const ImageFile& picture,
                          const std::filesystem::path& path) {
    const int orientation = picture.orientation();
    const KernelSize shown =
        asStored(KernelSize{picture.width(), picture.height()}, Orientation::inverse(orientation));
    if (!look.isInside(shown.width, shown.height)) {
        throw failureIn(path, "--look " + look.text() + " is not inside of the picture, which is " +
                                  shown.text() + " pixels");
    }
    const PictureArea area = asStored(look, orientation, picture.width(), picture.height());
    return {area.x, area.y, area.width, area.height};
}

VelornFindSettings findSettings(const BlindSettings& settings, const ImageFile& picture,
                                const std::filesystem::path& path) {
    VelornFindSettings find = api::findSettings();
    if (settings.largest) {
        const KernelSize stored = asStored(*settings.largest, picture.orientation());
        find.maxWidth = stored.width;
        find.maxHeight = stored.height;
    }
    if (settings.look) {
        find.region = storedRegion(*settings.look, picture, path);
    }
    find.smoothing = settings.smoothing;
    return find;
}

/// What is wrong with a restoration with the kernel; nothing if it is fine.
std::optional<std::string> doubtAbout(const api::FoundKernel& found) {
    if (found.report.kind == VELORN_KIND_NONE) {
        return "the picture does not look blurred";
    }
    if (found.report.confidence < kUncertain) {
        return "the kernel found is uncertain (confidence " + percentText(found.report.confidence) +
               ")";
    }
    return std::nullopt;
}

void warn(std::ostream& terminal, const std::filesystem::path& path, const std::string& text) {
    terminal << "velorn: warning: " << quoted(path) << ": " << text << '\n';
}

} // namespace

std::vector<api::FoundKernel> findKernels(const ImageFile& picture,
                                          const std::filesystem::path& path,
                                          const BlindSettings& settings, const Interrupt& interrupt,
                                          const api::Progress& progress) {
    VelornFindSettings find = findSettings(settings, picture, path);
    std::optional<api::Kernel> start;
    if (settings.start) {
        start = libraryKernel(
            asStored(KernelFile::read(*settings.start, std::nullopt), picture.orientation()));
        find.start = start->get();
    }
    std::vector<api::FoundKernel> found = callLibrary(
        path, interrupt, [&] { return api::findCandidates(picture.view(), find, progress); });
    if (settings.turn == Turn::Yes) {
        for (api::FoundKernel& candidate : found) {
            candidate.kernel = candidate.kernel.rotatedBy180();
        }
    }
    return found;
}

api::FoundKernel chosenKernel(const std::vector<api::FoundKernel>& found,
                              const std::filesystem::path& path, const BlindSettings& settings,
                              std::ostream& terminal) {
    const auto index = static_cast<std::size_t>(settings.candidate - 1);
    if (index >= found.size()) {
        throw failureIn(path, "there is no candidate " + std::to_string(settings.candidate) +
                                  ": the search has found " + std::to_string(found.size()));
    }
    const api::FoundKernel& chosen = found[index];
    const auto doubt = doubtAbout(chosen);
    if (doubt && settings.isStrict) {
        throw failureIn(path, *doubt + "; nothing is written because of --strict");
    }
    if (chosen.report.kind == VELORN_KIND_NONE) {
        warn(terminal, path, *doubt + " and is not restored");
    } else if (doubt) {
        warn(terminal, path,
             *doubt + ": the result may be worse than the picture; see the "
                      "candidates with 'velorn estimate --sheet'");
    }
    if (chosen.report.parts > 1 && chosen.report.partAgreement < kSameBlur) {
        warn(terminal, path, "the blur differs across the picture: no kernel fits all of it");
    }
    return chosen;
}

} // namespace velorn
