#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace restoration {

/// The curve between the values that a picture stores (display values) and light. Both are 0 at
/// black and 1 at white.
///
/// A strictly rising chain of straight pieces; the end pieces continue below black and above white.
/// `display` inverts `light` up to rounding: every level of 8 and of 16 bits comes back. Light has
/// a slope of at least 1/64 everywhere, because a flatter curve would turn the rounding errors of a
/// restoration into visible noise: pure powers are a little steeper in the darkest three of 255
/// levels. Const functions may run on any number of threads.
class ToneCurve {
public:
    static constexpr std::size_t kPieces = 4096;

    /// The curve of sRGB (IEC 61966-2-1).
    static ToneCurve sRgb();

    /// @param light  kPieces + 1 finite values at evenly spaced display values from 0 to 1. Only
    ///               their differences count: the curve is shifted and scaled to black and white.
    explicit ToneCurve(std::span<const double> light);

    float light(float display) const noexcept;
    float display(float light) const noexcept;
    /// The slope of `light` at a display value.
    float slope(float display) const noexcept;

    void toLight(std::span<float> values) const noexcept;
    void toDisplay(std::span<float> values) const noexcept;

private:
    static constexpr std::size_t kRoots = 4096;

    std::size_t pieceOfLight(float light) const noexcept;

    std::vector<float> m_light; ///< at the ends of the pieces
    /// The piece that holds the light (i / kRoots)^2.
    std::vector<std::uint16_t> m_pieceOfRoot;
};

} // namespace restoration
