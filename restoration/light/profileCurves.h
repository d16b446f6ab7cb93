#pragma once

#include "restoration/light/ToneCurves.h"

#include <cstddef>
#include <span>

namespace restoration {

/// Reads the tone curves of an ICC profile: those of red, green and blue of a profile that consists
/// of a matrix and curves, or the curve of a grey profile.
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for data that is no profile, for other colour
///         spaces and for profiles that hold tables instead of curves; std::bad_alloc
ToneCurves profileCurves(std::span<const std::byte> profile);

} // namespace restoration
