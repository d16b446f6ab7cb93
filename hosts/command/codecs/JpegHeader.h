#pragma once

#include "hosts/command/codecs/Subsampling.h"

#include <array>
#include <optional>
#include <span>

namespace velorn {

/// A quantisation table of a JPEG file, in natural order (row by row).
using QuantisationTable = std::array<int, 64>;

/// What the header of a JPEG file says about its coding.
struct JpegHeader {
    /// 1..100, see `estimatedQuality`.
    int quality = 0;
    Subsampling subsampling = Subsampling::none;
    /// Four inks instead of red, green and blue.
    bool isCmyk = false;
};

/// The header of a JPEG file in memory; nothing if the bytes are not one.
std::optional<JpegHeader> readJpegHeader(std::span<const unsigned char> file);

/// The quality, 1..100, whose table of brightness comes closest to `table`, by the sum of absolute
/// differences. Quality means what it does in the encoder of the Independent JPEG Group, and most
/// others: percentages that scale the example tables of ITU-T T.81 (1992), annex K. Exact for files
/// of those encoders; others get the quality that quantises as coarsely.
int estimatedQuality(const QuantisationTable& table);

} // namespace velorn
