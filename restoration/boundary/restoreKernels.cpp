#include "restoration/boundary/restoreKernels.h"

#include "restoration/boundary/argumentChecks.h"
#include "restoration/boundary/VelornKernel.h"
#include "restoration/failures/Failure.h"
#include "restoration/pictures/PictureFormat.h"

#include <algorithm>
#include <string>

namespace restoration {
void requireFit(const Kernel& kernel, const VelornPicture& source) {
    if (kernel.width > source.width || kernel.height > source.height) {
        throw Failure(VELORN_STATUS_KERNEL_TOO_LARGE,
                      "the kernel is " + std::to_string(kernel.width) + " by " +
                          std::to_string(kernel.height) + ", but the source is only " +
                          std::to_string(source.width) + " by " + std::to_string(source.height));
    }
}

std::vector<const Kernel*> checkedKernels(const VelornKernel* const* kernels, std::int32_t count,
                                          const VelornPicture& source) {
    const int colours = colourChannels(source);
    if (count != 0 && count != 1 && count != colours) {
        refuse("kernelCount is " + numberText(std::int64_t{count}) + ", but must be 0, 1 or " +
               numberText(std::int64_t{colours}) + ", the number of colour channels");
    }
    std::vector<const Kernel*> checked;
    for (std::int32_t i = 0; i < count; ++i) {
        requirePointer(kernels, "kernels");
        requirePointer(kernels[i], "kernels[" + std::to_string(i) + "]");
        checked.push_back(&kernels[i]->kernel);
        requireFit(*checked.back(), source);
    }
    const bool blursNothing = std::ranges::all_of(
        checked, [](const Kernel* kernel) { return kernel->largerSide() == 1; });
    return blursNothing ? std::vector<const Kernel*>() : checked;
}

} // namespace restoration
