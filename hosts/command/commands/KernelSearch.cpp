#include "hosts/command/commands/KernelSearch.h"

#include "hosts/command/commands/shownProgress.h"
#include "hosts/command/files/fileFailures.h"

namespace velorn {
namespace {

constexpr const char* kNotHelpful =
    "the kernel found explains the picture badly: the result may be worse than the picture; try "
    "another kernel size";

std::optional<BlindKernel> found(const ImageFile& picture, const BlindSettings& settings,
                                 const Interrupt& interrupt, std::ostream& terminal,
                                 bool isTerminal) {
    ProgressBar bar(terminal, isTerminal);
    return findKernel(picture.rgb(), settings, shownProgress(bar, interrupt));
}

} // namespace

BlurKernel searchKernel(const ImageFile& picture, const std::filesystem::path& path,
                        BlindSettings settings, const Interrupt& interrupt, std::ostream& terminal,
                        bool isTerminal) {
    settings.size = asStored(settings.size, picture.orientation());
    const auto kernel =
        naming(path, [&] { return found(picture, settings, interrupt, terminal, isTerminal); });
    interrupt.check();
    if (!kernel->isHelpful) {
        terminal << "velorn: warning: " << quoted(path) << ": " << kNotHelpful << '\n';
    }
    return kernel->kernel;
}

} // namespace velorn
