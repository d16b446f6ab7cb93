#include "hosts/command/commands/KernelCommand.h"

#include "hosts/command/files/TemporaryFile.h"
#include "hosts/command/kernels/KernelFile.h"

namespace velorn {

void runKernel(const KernelOptions& options, const Interrupt& interrupt) {
    const auto bytes = KernelFile::encode(makeKernel(options.blur), options.output);
    TemporaryFile target(options.output);
    target.write(bytes);
    interrupt.check();
    target.commit();
}

} // namespace velorn
