#pragma once

#include <cstdint>

namespace vel {

/// True when an area of pixels is large enough for a parallel region: below that, waking a team
/// costs more than it saves. Tiles of every side that the transforms support are far above it.
constexpr bool worthATeam(std::int64_t columns, std::int64_t rows) noexcept {
    constexpr std::int64_t kLeastPixels = 128 * 128;
    return columns * rows >= kLeastPixels;
}

} // namespace vel
