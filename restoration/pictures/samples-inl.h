#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Conversions of one sample at any address, for the loops of the reader and the writer.
namespace restoration {

template <class Sample>
Sample loadSample(const std::byte* address) noexcept {
    Sample sample;
    std::memcpy(&sample, address, sizeof sample);
    return sample;
}

inline float toFloat(std::uint8_t sample) noexcept {
    return static_cast<float>(sample) / 255.0f;
}
inline float toFloat(std::uint16_t sample) noexcept {
    return static_cast<float>(sample) / 65535.0f;
}
/// Not-a-numbers and infinities give 0: the difference of one and itself is not a number.
inline float toFloat(float sample) noexcept {
    return sample - sample == 0.0f ? sample : 0.0f;
}

/// The nearest sample; the nearest end of the range for values outside, 0 for not-a-numbers.
template <class Sample>
Sample fromFloat(float value) noexcept {
    constexpr auto kWhite = static_cast<float>(static_cast<Sample>(~Sample{0}));
    const float scaled = value * kWhite + 0.5f;
    const float bounded = scaled > 0.0f ? (scaled < kWhite ? scaled : kWhite) : 0.0f;
    return static_cast<Sample>(static_cast<std::int32_t>(bounded));
}
template <>
inline float fromFloat<float>(float value) noexcept {
    return value;
}

} // namespace restoration
