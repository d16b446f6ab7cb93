#pragma once

#include <bit>
#include <cstdint>
#include <iterator>
#include <limits>
#include <random>
#include <type_traits>

namespace vel::test {

/// Floats that are difficult to convert to an integer: ties, the ends of every range and the first
/// values beyond them, infinities, NaN of both signs, denormals and both zeros.
inline constexpr float kAwkwardFloats[] = {0.0f,
                                           -0.0f,
                                           0.5f,
                                           1.5f,
                                           2.5f,
                                           -0.5f,
                                           -1.5f,
                                           0.49999997f,
                                           254.5f,
                                           255.0f,
                                           255.49998f,
                                           255.5f,
                                           256.0f,
                                           -1.0f,
                                           1e-40f,
                                           -1e-40f,
                                           32766.5f,
                                           32767.0f,
                                           32767.5f,
                                           32768.0f,
                                           -32767.5f,
                                           -32768.0f,
                                           -32768.5f,
                                           -32769.0f,
                                           65534.5f,
                                           65535.0f,
                                           65535.5f,
                                           65536.0f,
                                           2147483520.0f,
                                           2147483648.0f,
                                           -2147483648.0f,
                                           4294967296.0f,
                                           1e30f,
                                           -1e30f,
                                           std::numeric_limits<float>::max(),
                                           std::numeric_limits<float>::lowest(),
                                           std::numeric_limits<float>::infinity(),
                                           -std::numeric_limits<float>::infinity(),
                                           std::numeric_limits<float>::quiet_NaN(),
                                           -std::numeric_limits<float>::quiet_NaN()};

/// A random pixel of type `T`. Integers cover their whole range. Floats are, with equal
/// probability, a tie, a difficult value, any bit pattern, or a value around the ranges of 8 and 16
/// bits.
template <class T>
T randomPixel(std::mt19937& random) {
    if constexpr (std::is_integral_v<T>) {
        return static_cast<T>(random());
    } else {
        switch (random() % 4) {
        case 0:
            return static_cast<float>(static_cast<std::int32_t>(random() % 140000) - 70000) + 0.5f;
        case 1:
            return kAwkwardFloats[random() % std::size(kAwkwardFloats)];
        case 2:
            return std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        default:
            return std::uniform_real_distribution<float>(-300.0f, 66000.0f)(random);
        }
    }
}

} // namespace vel::test
