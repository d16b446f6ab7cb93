#pragma once

namespace vel {

/// Chooses, once and for the whole process, the variant of every primitive that fits this
/// processor. The results do not depend on the choice. Without this call the first primitive that
/// runs makes it.
void selectProcessorVariants() noexcept;

} // namespace vel
