#pragma once

namespace restoration {

/// Number of processors that the calling thread may use, at least 1.
int availableProcessors() noexcept;

} // namespace restoration
