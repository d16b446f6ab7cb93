#pragma once

#include <cstdint>
#include <variant>
#include <vector>

namespace velorn {

/// Samples of a picture, interleaved, row after row without padding: 8 or 16 bits each.
using Samples = std::variant<std::vector<std::uint8_t>, std::vector<std::uint16_t>>;

} // namespace velorn
