#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/RgbPixels.h"

#include <optional>

namespace velorn::tools {

/// A kernel found in a picture, and whether it comes without a warning.
struct SearchResult {
    BlurKernel kernel;
    bool isTrusted = false;
};

/// The search through the export ornBlurEstimate, told a square that holds the blur. Empty when the
/// picture has too few edges.
std::optional<SearchResult> earlierSearch(const RgbPixels& pixels, int side);

/// The search of the restoration library, told nothing.
std::optional<SearchResult> librarySearch(const RgbPixels& pixels);

} // namespace velorn::tools
