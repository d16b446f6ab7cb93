#include "velimproclib/tiles/TileWalk.h"

#include "velimproclib/primitives/base/narrowToInt32.h"

#include <algorithm>

namespace vel {

namespace {

bool reachesEnd(std::int32_t current, std::int32_t length, std::int32_t total) {
    return std::int64_t{current} + length >= total;
}

/// The start of the tile after `current`, pulled back where it would end past the image.
std::int32_t nextStart(std::int32_t current, std::int32_t step, std::int32_t length,
                       std::int32_t total) {
    const std::int64_t stepped = std::int64_t{current} + step;
    const std::int64_t lastStart = std::int64_t{total} - length;
    return narrowToInt32(std::max<std::int64_t>(std::min(stepped, lastStart), 0));
}

std::int32_t withMargins(std::int32_t length, std::int64_t border) {
    return narrowToInt32(length + 2 * border);
}

/// One axis of a window.
struct Span {
    std::int64_t start;
    std::int64_t before;
    std::int64_t count;
    std::int64_t after;
};

Span spanUnderTile(std::int64_t current, std::int64_t length, std::int64_t border,
                   std::int64_t total) {
    const std::int64_t wantedStart = current - border;
    const std::int64_t wanted = length + 2 * border;
    const std::int64_t before = std::max<std::int64_t>(-wantedStart, 0);
    const std::int64_t excess = std::max<std::int64_t>(current + length + border - total, 0);
    return {std::max<std::int64_t>(wantedStart, 0), before, wanted - excess - before, excess};
}

} // namespace

TileWalk::TileWalk(std::int32_t imageWidth, std::int32_t imageHeight, const TileGeometry& across,
                   const TileGeometry& down) noexcept
    : m_imW(imageWidth), m_imH(imageHeight), m_roiW(across.length), m_roiH(down.length),
      m_stepX(across.step), m_stepY(down.step), m_nBlkX(across.count), m_nBlkY(down.count) {}

TileWalk::TileWalk(std::int32_t imageWidth, std::int32_t imageHeight,
                   const TileLayout& layout) noexcept
    : TileWalk(imageWidth, imageHeight,
               planBlocks(layout.mode, imageWidth,
                          withMargins(layout.tileWidth, -std::int64_t{layout.border}),
                          layout.overlap),
               planBlocks(layout.mode, imageHeight,
                          withMargins(layout.tileHeight, -std::int64_t{layout.border}),
                          layout.overlap)) {}

bool TileWalk::atFirstTile() const noexcept {
    // Tiles without a useful column finish nothing; only the flag tells that one was stored.
    return m_doneX == 0 && m_doneY == 0 && !m_storedATile;
}

WalkState TileWalk::advance() noexcept {
    if (!reachesEnd(m_curX, m_roiW, m_imW)) {
        if (m_stepX < 1) {
            return WalkState::kStuck;
        }
        m_curX = nextStart(m_curX, m_stepX, m_roiW, m_imW);
        return WalkState::kTileAhead;
    }
    if (reachesEnd(m_curY, m_roiH, m_imH)) {
        return WalkState::kFinished;
    }
    if (m_stepY < 1) {
        return WalkState::kStuck;
    }
    m_curX = 0;
    m_doneX = 0;
    m_doneY = std::min(m_curY + m_roiH, m_imH);
    m_curY = nextStart(m_curY, m_stepY, m_roiH, m_imH);
    return WalkState::kTileAhead;
}

void TileWalk::noteStored() noexcept {
    m_doneX = std::min(m_curX + storedWidth(), m_imW);
    m_storedATile = true;
}

bool TileWalk::windowOf(std::int32_t border, TileWindow& window) const noexcept {
    const Span across = spanUnderTile(m_curX, m_roiW, border, m_imW);
    const Span down = spanUnderTile(m_curY, m_roiH, border, m_imH);
    if (across.count < 1 || down.count < 1) {
        return false;
    }
    window = {narrowToInt32(across.start),  narrowToInt32(down.start),
              narrowToInt32(across.count),  narrowToInt32(down.count),
              narrowToInt32(across.before), narrowToInt32(down.before),
              narrowToInt32(across.after),  narrowToInt32(down.after)};
    return true;
}

std::int32_t TileWalk::storedWidth() const noexcept {
    return std::min(m_roiW, m_imW - m_curX);
}

std::int32_t TileWalk::storedHeight() const noexcept {
    return std::min(m_roiH, m_imH - m_curY);
}

std::int32_t TileWalk::widthWith(std::int32_t border) const noexcept {
    return withMargins(m_roiW, border);
}

std::int32_t TileWalk::heightWith(std::int32_t border) const noexcept {
    return withMargins(m_roiH, border);
}

bool TileWalk::endsARow() const noexcept {
    return reachesEnd(m_curX, m_roiW, m_imW);
}

} // namespace vel
