#include "hosts/command/commands/EstimateCommand.h"

#include "hosts/command/commands/KernelSearch.h"
#include "hosts/command/files/TemporaryFile.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/kernels/KernelPicture.h"

namespace velorn {

void runEstimate(const EstimateOptions& options, const Interrupt& interrupt, std::ostream& out,
                 std::ostream& terminal, bool isTerminal) {
    KernelFile::checkWritable(options.output);
    const ImageFile picture = ImageFile::read(options.input);
    // Opened before the long work, so that an output that cannot be written fails at once.
    TemporaryFile target(options.output);
    interrupt.check();

    const BlurKernel stored = blurKernelOf(
        searchKernel(picture, options.input, options.blind, interrupt, terminal, isTerminal));
    // Kernel files refer to the picture as it is displayed.
    const BlurKernel shown = asShown(stored, picture.orientation());
    target.write(KernelFile::encode(shown, options.output));
    interrupt.check();
    target.commit();
    out << kernelPicture(shown) << std::flush;
}

} // namespace velorn
