#include "hosts/command/commands/KernelCommand.h"

#include "hosts/command/files/OutputFile.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/options/FormatOption.h"

namespace velorn {

void runKernel(const KernelOptions& options, const Interrupt& interrupt) {
    const auto bytes =
        KernelFile::encode(makeKernel(options.blur), kernelName(options.output, options.format));
    OutputFile target(options.output);
    target.write(bytes);
    interrupt.check();
    target.commit();
}

} // namespace velorn
