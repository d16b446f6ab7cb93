#pragma once

#include "velorn.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// Rows of interleaved samples at any address to rows of floats, 1.0 = white, and back. `samples`
/// is a VelornSamples, `channels` the number of samples of a pixel, 1..4. All processor variants
/// give the same bits.
namespace restoration {

/// Reads the first `targets.size()` channels of `count` pixels, each to its own row. Floats that
/// are not finite give 0.
void readSamples(std::int32_t samples, int channels, const std::byte* pixels, std::size_t count,
                 std::span<float* const> targets) noexcept;

/// Writes the first `sources.size()` channels of `count` pixels. Integers are rounded to nearest
/// and clamped, not-a-numbers become 0; floats stay as they are.
void writeSamples(std::int32_t samples, int channels, std::span<const float* const> sources,
                  std::size_t count, std::byte* pixels) noexcept;

} // namespace restoration
