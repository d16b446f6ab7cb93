#pragma once

namespace vel {

/// Selects for the whole process the variant of every primitive that suits this processor best.
/// Results do not depend on the variant. Without this call, the first primitive that runs selects.
void selectProcessorVariants() noexcept;

} // namespace vel
