#pragma once

#include <optional>

namespace vel {

/// The binary logarithm of the side of a tile, 256, 512 or 1024; nothing for any other side.
constexpr std::optional<int> transformOrder(int side) noexcept {
    switch (side) {
    case 256:
        return 8;
    case 512:
        return 9;
    case 1024:
        return 10;
    default:
        return std::nullopt;
    }
}

} // namespace vel
