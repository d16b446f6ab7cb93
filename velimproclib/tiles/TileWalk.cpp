#include "velimproclib/tiles/TileWalk.h"

#include "velimproclib/primitives/base/narrowToInt32.h"

#include <algorithm>

namespace vel {

namespace {

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
    const std::int64_t after = std::max<std::int64_t>(current + length + border - total, 0);
    return {std::max<std::int64_t>(wantedStart, 0), before, wanted - after - before, after};
}

} // namespace

TileWalk::Axis::Axis(std::int32_t imageLength, const TileGeometry& plan) noexcept
    : total(imageLength), length(plan.length), step(plan.step), count(plan.count) {}

bool TileWalk::Axis::reachesEnd() const noexcept {
    return std::int64_t{current} + length >= total;
}

void TileWalk::Axis::moveOn() noexcept {
    const std::int64_t stepped = std::int64_t{current} + step;
    const std::int64_t lastStart = std::int64_t{total} - length;
    current = narrowToInt32(std::max<std::int64_t>(std::min(stepped, lastStart), 0));
}

std::int32_t TileWalk::Axis::stored() const noexcept {
    return std::min(length, total - current);
}

TileWalk::TileWalk(std::int32_t imageWidth, std::int32_t imageHeight, const TileGeometry& across,
                   const TileGeometry& down, std::int32_t border) noexcept
    : m_across(imageWidth, across), m_down(imageHeight, down), m_border(border) {}

TileWalk::TileWalk(std::int32_t imageWidth, std::int32_t imageHeight,
                   const TileLayout& layout) noexcept
    : TileWalk(
          imageWidth, imageHeight,
          planBlocks(layout.mode, imageWidth,
                     withMargins(layout.tileWidth, -std::int64_t{layout.border}), layout.overlap),
          planBlocks(layout.mode, imageHeight,
                     withMargins(layout.tileHeight, -std::int64_t{layout.border}), layout.overlap),
          layout.border) {}

std::int32_t TileWalk::tileWidth() const noexcept {
    return withMargins(m_across.length, m_border);
}

std::int32_t TileWalk::tileHeight() const noexcept {
    return withMargins(m_down.length, m_border);
}

bool TileWalk::atFirstTile() const noexcept {
    // A tile without a useful column finishes nothing; only the flag shows that it was stored.
    return m_across.done == 0 && m_down.done == 0 && !m_storedATile;
}

WalkState TileWalk::advance() noexcept {
    if (!m_across.reachesEnd()) {
        if (m_across.step < 1) {
            return WalkState::kStuck;
        }
        m_across.moveOn();
        return WalkState::kTileAhead;
    }
    if (m_down.reachesEnd()) {
        return WalkState::kFinished;
    }
    if (m_down.step < 1) {
        return WalkState::kStuck;
    }
    m_across.current = 0;
    m_across.done = 0;
    m_down.done = std::min(m_down.current + m_down.length, m_down.total);
    m_down.moveOn();
    return WalkState::kTileAhead;
}

void TileWalk::noteStored() noexcept {
    m_across.done = std::min(m_across.current + m_across.stored(), m_across.total);
    m_storedATile = true;
}

std::optional<TileWindow> TileWalk::window() const noexcept {
    const Span across = spanUnderTile(m_across.current, m_across.length, m_border, m_across.total);
    const Span down = spanUnderTile(m_down.current, m_down.length, m_border, m_down.total);
    if (across.count < 1 || down.count < 1) {
        return std::nullopt;
    }
    return TileWindow{narrowToInt32(across.start),  narrowToInt32(down.start),
                      narrowToInt32(across.count),  narrowToInt32(down.count),
                      narrowToInt32(across.before), narrowToInt32(down.before),
                      narrowToInt32(across.after),  narrowToInt32(down.after)};
}

} // namespace vel
