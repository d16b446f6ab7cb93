#include "hosts/command/commands/KernelSearch.h"

#include "hosts/command/commands/shownProgress.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/library/callLibrary.h"

namespace velorn {
namespace {

constexpr const char* kNotHelpful =
    "the kernel found is uncertain: the result may be worse than the picture; try another largest "
    "size";
constexpr const char* kNotBlurred = "the picture does not look blurred and is not restored";
/// Below this confidence a restoration may do harm, see VelornFindReport.
constexpr float kUncertain = 0.5f;

VelornFindSettings findSettings(const BlindSettings& settings, int orientation) {
    VelornFindSettings find = api::findSettings();
    if (settings.largest) {
        const KernelSize stored = asStored(*settings.largest, orientation);
        find.maxWidth = stored.width;
        find.maxHeight = stored.height;
    }
    find.smoothing = settings.smoothing;
    return find;
}

} // namespace

api::Kernel searchKernel(const ImageFile& picture, const std::filesystem::path& path,
                         const BlindSettings& settings, const Interrupt& interrupt,
                         std::ostream& terminal, bool isTerminal) {
    const api::FoundKernel found = callLibrary(path, interrupt, [&] {
        ProgressBar bar(terminal, isTerminal);
        return api::findKernel(picture.view(), findSettings(settings, picture.orientation()),
                               shownProgress(bar, interrupt));
    });
    if (found.kernel.width() == 1 && found.kernel.height() == 1) {
        terminal << "velorn: warning: " << quoted(path) << ": " << kNotBlurred << '\n';
    } else if (found.report.confidence < kUncertain) {
        terminal << "velorn: warning: " << quoted(path) << ": " << kNotHelpful << '\n';
    }
    return settings.turn == Turn::Yes ? found.kernel.rotatedBy180() : found.kernel;
}

} // namespace velorn
