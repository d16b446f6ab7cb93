#pragma once

#include "restoration/noise/ColourRows.h"
#include "restoration/planes/Plane.h"

#include <array>
#include <span>
#include <vector>

namespace restoration {

/// A plane as a weighted sum of the colour channels.
using ChannelWeights = std::array<float, 4>;

/// The squares of 2 by 2 pixels between a row of a picture and the row below it.
class SquareRows {
public:
    /// @throws std::bad_alloc
    explicit SquareRows(const ColourRows& picture);

    /// Loads the rows `y` and `y + 1`.
    void moveTo(int y);

    /// For each square |a - b - c + d| / 2 of a plane's values in levels of 255, or -1 where a
    /// sample is exactly black or white. Valid until the next call.
    std::span<const float> differences(const ChannelWeights& plane);

private:
    void load(int y, Plane& rows, std::vector<float>& clipped) const;
    void subtract();

    const ColourRows& m_picture;
    int m_row = -2;
    Plane m_upper; ///< a row for each channel
    Plane m_lower;
    std::vector<float> m_upperClipped; ///< 1 or 0 for each pixel
    std::vector<float> m_lowerClipped;
    Plane m_channelDifferences;
    std::vector<float> m_clipped; ///< above 0 for squares with clipped samples
    std::vector<float> m_differences;
};

} // namespace restoration
