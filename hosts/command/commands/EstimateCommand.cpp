#include "hosts/command/commands/EstimateCommand.h"

#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/kernels/KernelPicture.h"
#include "hosts/command/pictures/ImageFile.h"
#include "hosts/command/terminal/Failure.h"
#include "hosts/command/terminal/TemporaryFile.h"

namespace velorn {
namespace {

BlindKernel foundIn(const ImageFile& picture, const EstimateOptions& options,
                    const Interrupt& interrupt, ProgressBar& bar) {
    BlindSettings settings = options.blind;
    settings.size = asStored(settings.size, picture.orientation());
    try {
        return findKernel(picture.rgb(), settings, interrupt, bar);
    } catch (const Failure& failure) {
        throw Failure(quoted(options.input) + ": " + failure.what());
    }
}

} // namespace

void runEstimate(const EstimateOptions& options, const Interrupt& interrupt, std::ostream& out,
                 std::ostream& terminal, bool isTerminal) {
    KernelFile::checkWritable(options.output);
    const ImageFile picture = ImageFile::read(options.input);
    // Opened before the work, so that a target that cannot be written is told at once.
    TemporaryFile target(options.output);
    interrupt.check();

    BlindKernel found;
    {
        ProgressBar bar(terminal, isTerminal);
        found = foundIn(picture, options, interrupt, bar);
    }
    // Kernel files speak of the picture as it is shown; its pixels may be stored turned.
    const BlurKernel shown = asShown(found.kernel, picture.orientation());
    target.write(KernelFile::encode(shown, options.output));
    interrupt.check();
    target.commit();
    out << kernelPicture(shown) << std::flush;
    if (!found.isHelpful) {
        terminal << "velorn: warning: " << quoted(options.input) << ": " << kNotHelpful << '\n';
    }
}

} // namespace velorn
