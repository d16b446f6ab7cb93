#include "restoration/noise/SquareRows.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace restoration {

SquareRows::SquareRows(const ColourRows& picture)
    : m_picture(picture), m_upper(picture.width, picture.channels),
      m_lower(picture.width, picture.channels), m_upperClipped(m_upper.width()),
      m_lowerClipped(m_upper.width()),
      m_channelDifferences(std::max(picture.width - 1, 0), picture.channels),
      m_clipped(m_channelDifferences.width()), m_differences(m_channelDifferences.width()) {}

void SquareRows::load(int y, Plane& rows, std::vector<float>& clipped) const {
    std::ranges::fill(clipped, 0.0f);
    for (int c = 0; c < m_picture.channels; ++c) {
        float* const samples = rows.row(c);
        m_picture.load(y, c, samples);
        for (std::size_t x = 0; x < clipped.size(); ++x) {
            clipped[x] = samples[x] == 0.0f || samples[x] == 1.0f ? 1.0f : clipped[x];
        }
    }
}

void SquareRows::subtract() {
    for (int c = 0; c < m_picture.channels; ++c) {
        const float* const upper = m_upper.row(c);
        const float* const lower = m_lower.row(c);
        float* const difference = m_channelDifferences.row(c);
        for (std::size_t x = 0; x < m_differences.size(); ++x) {
            difference[x] = (upper[x] - upper[x + 1]) - (lower[x] - lower[x + 1]);
        }
    }
    for (std::size_t x = 0; x < m_clipped.size(); ++x) {
        m_clipped[x] = (m_upperClipped[x] + m_upperClipped[x + 1]) +
                       (m_lowerClipped[x] + m_lowerClipped[x + 1]);
    }
}

void SquareRows::moveTo(int y) {
    if (y == m_row + 1) {
        std::swap(m_upper, m_lower);
        std::swap(m_upperClipped, m_lowerClipped);
    } else {
        load(y, m_upper, m_upperClipped);
    }
    load(y + 1, m_lower, m_lowerClipped);
    m_row = y;
    subtract();
}

std::span<const float> SquareRows::differences(const ChannelWeights& plane) {
    constexpr float kHalfLevels = 127.5f;
    std::ranges::fill(m_differences, 0.0f);
    for (int c = 0; c < m_picture.channels; ++c) {
        const float weight = plane[static_cast<std::size_t>(c)] * kHalfLevels;
        const float* const difference = m_channelDifferences.row(c);
        for (std::size_t x = 0; x < m_differences.size(); ++x) {
            m_differences[x] += weight * difference[x];
        }
    }
    for (std::size_t x = 0; x < m_differences.size(); ++x) {
        m_differences[x] = m_clipped[x] > 0.0f ? -1.0f : std::abs(m_differences[x]);
    }
    return m_differences;
}

} // namespace restoration
