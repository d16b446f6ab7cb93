#include "velimproclib/tiles/BlockProcP3.h"

#include "velimproclib/images/stepOf.h"
#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/primitives/pixels/ChannelMoves.h"
#include "velimproclib/primitives/pixels/Conversions.h"
#include "velimproclib/tiles/fillRamp.h"
#include "velimproclib/tiles/forRowChunks.h"
#include "velimproclib/tiles/imageExtendBorder.h"
#include "velimproclib/tiles/stripBlends.h"

#include <algorithm>

namespace vel {

namespace {

constexpr std::size_t kChannels = 3;

/// The scale and the moves of an element type.
template <class T>
struct Depth;

template <>
struct Depth<std::uint8_t> {
    static constexpr double kFullScale = 256.0;
    static constexpr auto kChannelToPlane = channelToPlaneC3U8;
    static constexpr auto kPlaneToChannel = planeToChannelC3U8;
    static constexpr auto kToFloat = convertU8toF32;
    static constexpr auto kFromFloat = convertF32toU8;
};

template <>
struct Depth<std::uint16_t> {
    static constexpr double kFullScale = 32768.0;
    static constexpr auto kChannelToPlane = channelToPlaneC3U16;
    static constexpr auto kPlaneToChannel = planeToChannelC3U16;
    static constexpr auto kToFloat = convertU16toF32;
    static constexpr auto kFromFloat = convertF32toU16;
};

bool isEightBits(const cv::Mat& image) {
    return image.depth() == CV_8U;
}

/// The element `x` of row `y`, counted in elements and not in pixels.
template <class T>
T* elementAt(cv::Mat& image, std::int32_t y, std::size_t x) {
    return reinterpret_cast<T*>(image.ptr(y)) + x;
}

std::size_t firstElement(std::int32_t column, std::size_t channel) {
    return static_cast<std::size_t>(column) * kChannels + channel;
}

} // namespace

void CBlockProcP3::init(const cv::Mat& source, const cv::Mat& target, std::int32_t tileWidth,
                        std::int32_t tileHeight, std::uint8_t mode, std::int32_t overlap,
                        std::int32_t border, std::int32_t taper) {
    if (source.type() != CV_8UC3 && source.type() != CV_16UC3) {
        throw "CBlockProcP3::init - source.type() != CV_8UC3 && source.type() != CV_16UC3";
    }
    if (source.type() != target.type() || source.size() != target.size()) {
        throw "CBlockProcP3::init - source and target are not of the same type and size";
    }
    if (border < 0) {
        throw "CBlockProcP3::init - border < 0";
    }
    m_in = source;
    m_out = target;
    m_border = border;
    m_taper = taper;
    m_walk = TileWalk(m_in.cols, m_in.rows, {tileWidth, tileHeight, mode, overlap, border});
    createPlanes();
}

void CBlockProcP3::createPlanes() {
    TileWindow window;
    if (!m_walk.windowOf(m_border, window)) {
        // No tile can be loaded: the first one fails, and its size means nothing.
        return;
    }
    const std::int32_t width = m_walk.widthWith(m_border);
    const std::int32_t height = m_walk.heightWith(m_border);
    for (cv::Mat& plane : m_blk) {
        plane.create(height, width, CV_32FC1);
    }
    m_scratch.create(height, width, m_in.depth());
    m_strip.create(std::max(m_walk.m_roiH, 0), m_walk.m_imW, m_in.type());
    m_ramp.assign(static_cast<std::size_t>(std::max(width, height)) + 1, 0.0f);
}

TilePlanes* CBlockProcP3::nextBlock() {
    if (!m_walk.atFirstTile() && !advance()) {
        return nullptr;
    }
    convertBlkDupBorder();
    return &m_blk;
}

bool CBlockProcP3::advance() {
    const WalkState state = m_walk.advance();
    if (state == WalkState::kStuck) {
        // The overlap takes up the whole tile; walking on would never end.
        throw kColumnGap;
    }
    return state == WalkState::kTileAhead;
}

void CBlockProcP3::convertBlkDupBorder() {
    TileWindow window;
    if (!m_walk.windowOf(m_border, window)) {
        throw kNoPixels;
    }
    forRowChunks(window.width, window.height, [&](cv::Range rows) {
        if (isEightBits(m_in)) {
            loadRows<std::uint8_t>(window, rows);
        } else {
            loadRows<std::uint16_t>(window, rows);
        }
    });
    if (m_taper == 1) {
        m_tileTaper.taperBlock(m_blk, m_border);
    }
}

/// Rows are counted from the window's first. A chunk fills the margin beside its rows, and the
/// first and the last the one above and below: no chunk waits for another. The scale is a power of
/// two, so that pixels may be scaled before the margin is filled from them as well as after.
template <class T>
void CBlockProcP3::loadRows(const TileWindow& window, cv::Range rows) {
    T* scratch = elementAt<T>(m_scratch, rows.start, 0);
    const std::int32_t above = rows.start == 0 ? window.top : 0;
    const std::int32_t below = rows.end == window.height ? window.bottom : 0;
    for (std::size_t c = 0; c < kChannels; ++c) {
        const T* source = elementAt<T>(m_in, window.y + rows.start, firstElement(window.x, c));
        cv::Mat part =
            m_blk[c].rowRange(window.top + rows.start - above, window.top + rows.end + below);
        cv::Mat loaded = part(cv::Rect(window.left, above, window.width, rows.size()));
        Depth<T>::kChannelToPlane(source, stepOf(m_in), scratch, stepOf(m_scratch), window.width,
                                  rows.size());
        Depth<T>::kToFloat(scratch, stepOf(m_scratch), loaded.ptr<float>(), stepOf(loaded),
                           window.width, rows.size());
        loaded.convertTo(loaded, CV_32F, 1.0 / Depth<T>::kFullScale);
        imageExtendBorder(part, window.left, above, window.right, below);
    }
}

void CBlockProcP3::doneABlock() {
    if (m_walk.overlapX() < 0) {
        throw kColumnGap;
    }
    storeTile();
    if (m_walk.endsARow()) {
        mergeRowOfTiles();
    }
    m_walk.noteStored();
}

void CBlockProcP3::storeTile() {
    const std::int32_t width = m_walk.storedWidth();
    const std::int32_t height = m_walk.storedHeight();
    if (width < 1 || height < 1) {
        return;
    }
    const auto overlapX = static_cast<std::int32_t>(m_walk.overlapX());
    fillRamp(m_ramp, overlapX);
    forRowChunks(width, height, [&](cv::Range rows) {
        if (isEightBits(m_in)) {
            storeRows<std::uint8_t>(overlapX, width, rows);
        } else {
            storeRows<std::uint16_t>(overlapX, width, rows);
        }
    });
}

/// Rows are counted from the first of the useful part, which is the strip's first.
template <class T>
void CBlockProcP3::storeRows(std::int32_t overlapX, std::int32_t width, cv::Range rows) {
    T* scratch = elementAt<T>(m_scratch, rows.start, 0);
    for (std::size_t c = 0; c < kChannels; ++c) {
        const std::size_t firstInStrip = firstElement(m_walk.m_curX, c);
        cv::Mat useful = m_blk[c](cv::Rect(m_border, m_border + rows.start, width, rows.size()));
        useful.convertTo(useful, CV_32F, Depth<T>::kFullScale);
        for (int y = 0; y < rows.size(); ++y) {
            fadeInColumns(useful.ptr<float>(y), elementAt<T>(m_strip, rows.start + y, firstInStrip),
                          kChannels, m_ramp.data(), static_cast<std::size_t>(overlapX));
        }
        Depth<T>::kFromFloat(useful.ptr<float>(), stepOf(useful), scratch, stepOf(m_scratch), width,
                             rows.size(), kToNearestEven);
        Depth<T>::kPlaneToChannel(scratch, stepOf(m_scratch),
                                  elementAt<T>(m_strip, rows.start, firstInStrip), stepOf(m_strip),
                                  width, rows.size());
    }
}

void CBlockProcP3::mergeRowOfTiles() {
    if (m_walk.overlapY() < 0) {
        throw kRowGap;
    }
    if (isEightBits(m_in)) {
        mergeStrip<std::uint8_t>(m_strip, m_out, m_walk, m_ramp);
    } else {
        mergeStrip<std::uint16_t>(m_strip, m_out, m_walk, m_ramp);
    }
}

} // namespace vel
