#include "restoration/tiles/TileMerger.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace restoration {

TileMerger::TileMerger(const PictureReader& source, const PictureWriter& result, const Rect& region)
    : m_source(source), m_result(result), m_region(region), m_top(region.y), m_bottom(region.y),
      m_strips(static_cast<std::size_t>(source.colours())) {}

void TileMerger::merge(const FinishedTile& tile) {
    moveTo(tile.part.y);
    growTo(tile.part.bottom());
    const auto width = static_cast<std::size_t>(tile.part.width);
    m_columnWeights.resize(width);
    for (std::size_t i = 0; i < width; ++i) {
        m_columnWeights[i] = axisWeight(tile.plan.columns, tile.part.x + static_cast<int>(i));
    }
    const auto stripWidth = static_cast<std::size_t>(m_region.width);
    const auto left = static_cast<std::size_t>(tile.part.x - m_region.x);
    for (std::size_t colour = 0; colour < m_strips.size(); ++colour) {
        for (int y = tile.part.y; y < tile.part.bottom(); ++y) {
            const float rowWeight = axisWeight(tile.plan.rows, y);
            const float* source = tile.colours[colour].row(y - tile.part.y);
            float* target = m_strips[colour].data() + stripRow(y) * stripWidth + left;
            for (std::size_t i = 0; i < width; ++i) {
                target[i] += m_columnWeights[i] * rowWeight * source[i];
            }
        }
    }
}

void TileMerger::finish() {
    moveTo(m_bottom);
}

/// Writes and drops the rows above `top`.
void TileMerger::moveTo(int top) {
    if (top <= m_top) {
        return;
    }
    for (int y = m_top; y < top; ++y) {
        writeRow(y);
    }
    const std::size_t dropped = stripRow(top) * static_cast<std::size_t>(m_region.width);
    for (std::vector<float>& strip : m_strips) {
        strip.erase(strip.begin(), strip.begin() + static_cast<std::ptrdiff_t>(dropped));
    }
    m_top = top;
}

void TileMerger::growTo(int bottom) {
    if (bottom <= m_bottom) {
        return;
    }
    for (std::vector<float>& strip : m_strips) {
        strip.resize(stripRow(bottom) * static_cast<std::size_t>(m_region.width), 0.0f);
    }
    m_bottom = bottom;
}

void TileMerger::writeRow(int y) {
    std::array<const float*, 4> rows{};
    const std::size_t offset = stripRow(y) * static_cast<std::size_t>(m_region.width);
    for (std::size_t colour = 0; colour < m_strips.size(); ++colour) {
        rows[colour] = m_strips[colour].data() + offset;
    }
    m_result.writeRow(y - m_region.y, 0, m_region.width, std::span(rows.data(), m_strips.size()));
    if (m_source.hasAlpha()) {
        m_alpha.resize(static_cast<std::size_t>(m_region.width));
        const int alpha = m_source.colours();
        m_source.readChannel(alpha, y, m_region.x, m_region.width, m_alpha.data());
        m_result.writeChannel(alpha, y - m_region.y, 0, m_region.width, m_alpha.data());
    }
}

} // namespace restoration
