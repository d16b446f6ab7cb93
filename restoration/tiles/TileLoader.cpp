#include "restoration/tiles/TileLoader.h"

#include "restoration/planes/luminanceChroma.h"
#include "restoration/tiles/joinEdges.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace restoration {
namespace {

/// Continues the pixels begin..end - 1 of a row to both sides.
void repeatEnds(std::span<float> row, std::size_t begin, std::size_t end) {
    std::fill(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(begin), row[begin]);
    std::fill(row.begin() + static_cast<std::ptrdiff_t>(end), row.end(), row[end - 1]);
}

void copyRow(Plane& plane, int from, int to) {
    std::copy_n(plane.row(from), plane.width(), plane.row(to));
}

/// Continues the rows begin..end - 1 of the first `height` rows upwards and downwards.
void repeatEndRows(Plane& plane, int begin, int end, int height) {
    for (int y = 0; y < begin; ++y) {
        copyRow(plane, begin, y);
    }
    for (int y = end; y < height; ++y) {
        copyRow(plane, end - 1, y);
    }
}

/// Marks the pixels of `part` as known and all others as unknown.
void markKnown(Mask& known, int side, const Rect& part) {
    for (int y = 0; y < side; ++y) {
        std::uint8_t* row = known.row(y);
        std::fill_n(row, side, std::uint8_t{0});
        if (part.y <= y && y < part.bottom()) {
            std::fill_n(row + part.x, part.width, std::uint8_t{1});
        }
    }
}

} // namespace

void TileLoader::load(const Rect& window, Tile& tile) const {
    allocate(tile);
    tile.window = window;
    const Rect inside = intersection(window, {0, 0, m_picture.width(), m_picture.height()});
    for (int y = inside.y; y < inside.bottom(); ++y) {
        readRow(y, inside, tile);
    }
    markKnownPixels(inside, tile);
    for (int y = inside.y; y < inside.bottom(); ++y) {
        finishRow(y, inside, tile);
    }
    for (Plane& plane : tile.planes) {
        repeatEndRows(plane, inside.y - window.y, inside.bottom() - window.y, window.height);
        joinEdges(plane, window.width, window.height);
    }
}

void TileLoader::markKnownPixels(const Rect& inside, Tile& tile) const {
    const Rect& window = tile.window;
    const auto inTile = [&window](const Rect& part) {
        return Rect{part.x - window.x, part.y - window.y, part.width, part.height};
    };
    tile.isIncomplete = m_rules.isBeyondUnknown && inside != window;
    markKnown(tile.known, m_side, inTile(m_rules.isBeyondUnknown ? inside : window));
    tile.hidesLight = m_rules.clipping != nullptr &&
                      m_rules.clipping->mark(tile.planes, inTile(inside), tile.known);
    tile.isIncomplete = tile.isIncomplete || tile.hidesLight;
}

void TileLoader::allocate(Tile& tile) const {
    if (tile.side != m_side) {
        tile.known = Mask(m_side, m_side);
        tile.planes.clear();
        tile.side = m_side;
    }
    while (tile.planes.size() < static_cast<std::size_t>(m_picture.colours())) {
        tile.planes.emplace_back(m_side, m_side);
    }
}

/// Reads a row as channels.
void TileLoader::readRow(int y, const Rect& inside, Tile& tile) const {
    const std::size_t count = tile.planes.size();
    const auto pixels = static_cast<std::size_t>(inside.width);
    std::array<float*, 4> targets{};
    for (std::size_t i = 0; i < count; ++i) {
        targets[i] = tile.planes[i].row(y - tile.window.y) + inside.x - tile.window.x;
    }
    m_picture.readRow(y, inside.x, inside.width, std::span(targets.data(), count));
    for (std::size_t i = 0; i < count && m_rules.light != nullptr; ++i) {
        m_rules.light->of(i).toLight({targets[i], pixels});
    }
}

/// Turns the channels of a row into the planes of the tile and continues them to both sides.
void TileLoader::finishRow(int y, const Rect& inside, Tile& tile) const {
    const std::size_t count = tile.planes.size();
    const auto begin = static_cast<std::size_t>(inside.x - tile.window.x);
    const auto pixels = static_cast<std::size_t>(inside.width);
    std::array<std::span<float>, 4> rows;
    for (std::size_t i = 0; i < count; ++i) {
        rows[i] = {tile.planes[i].row(y - tile.window.y),
                   static_cast<std::size_t>(tile.window.width)};
    }
    if (m_rules.layout == PlaneLayout::LuminanceChroma) {
        toLuminanceChroma(rows[0].subspan(begin, pixels), rows[1].subspan(begin, pixels),
                          rows[2].subspan(begin, pixels));
    }
    for (std::size_t i = 0; i < count; ++i) {
        repeatEnds(rows[i], begin, begin + pixels);
    }
}

} // namespace restoration
