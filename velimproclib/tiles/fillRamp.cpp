#include "velimproclib/tiles/fillRamp.h"

namespace vel {

void fillRamp(std::span<float> ramp, std::int32_t n) noexcept {
    const auto count = static_cast<std::size_t>(n);
    const float inverse = 1.0f / static_cast<float>(n + 1);
    for (std::size_t i = 0; i < count; ++i) {
        ramp[i] = static_cast<float>(static_cast<double>(i + 1) * static_cast<double>(inverse));
    }
    ramp[count] = 1.0f;
}

} // namespace vel
