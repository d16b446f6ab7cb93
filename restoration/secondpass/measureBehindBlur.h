#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/tiles/samplePatches.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace restoration {

/// A sample of the planes that `loader` loads, for `measureBehindBlur`.
/// @throws std::bad_alloc
std::vector<Patch> noisePatches(const TileLoader& loader);

/// The noise of plane `plane` of the patches, whose blur is `kernel`, in levels of 255
/// (`NoiseBehindBlur`). Squares with unknown pixels are left out. Nothing when too little of the
/// picture or of its frequencies is of use.
/// @throws std::bad_alloc
std::optional<float> measureBehindBlur(std::span<const Patch> patches, std::size_t plane,
                                       const Kernel& kernel);

} // namespace restoration
