#include "velimproclib/primitives/base/ProcessorVariants.h"

#include <hwy/highway.h>

namespace vel {

void selectProcessorVariants() noexcept {
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

} // namespace vel
