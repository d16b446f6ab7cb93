#include "velimproclib/tiles/BlockProcP3.h"

#include "velimproclib/images/stepOf.h"
#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/primitives/pixels/ChannelMoves.h"
#include "velimproclib/tiles/forRowChunks.h"
#include "velimproclib/tiles/loadWindowRows.h"
#include "velimproclib/tiles/PixelDepth.h"

namespace vel {

namespace {

constexpr std::size_t kChannels = 3;

/// The level that 1.0 stands for, and the moves between an interleaved image and planes.
template <class T>
struct Channels;

template <>
struct Channels<std::uint8_t> {
    using Source = std::uint8_t;
    static constexpr float kFullScale = 256.0f;
    static constexpr auto kToPlane = channelToPlaneC3U8;
    static constexpr auto kFromPlane = planeToChannelC3U8;
};

template <>
struct Channels<std::uint16_t> {
    using Source = Unaligned<std::uint16_t>; // the rows of a host may start at any byte
    static constexpr float kFullScale = 32768.0f;
    static constexpr auto kToPlane = unalignedChannelToPlaneC3U16;
    static constexpr auto kFromPlane = planeToChannelC3U16;
};

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
    m_taper = taper;
    m_walk = TileWalk(m_in.cols, m_in.rows, {tileWidth, tileHeight, mode, overlap, border});
    // Without a window the first tile fails, and its size means nothing.
    if (m_walk.window()) {
        createPlanes();
    }
}

void CBlockProcP3::createPlanes() {
    for (cv::Mat& plane : m_blk) {
        plane.create(m_walk.tileHeight(), m_walk.tileWidth(), CV_32FC1);
    }
    m_scratch.create(m_walk.tileHeight(), m_walk.tileWidth(), m_in.depth());
    m_strip.create(m_walk, m_in.type());
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
        // The overlap takes up the whole tile: the walk would never end.
        throw kColumnGap;
    }
    return state == WalkState::kTileAhead;
}

void CBlockProcP3::convertBlkDupBorder() {
    const std::optional<TileWindow> window = m_walk.window();
    if (!window) {
        throw kNoPixels;
    }
    forRowChunks(window->width, window->height, [&](cv::Range rows) {
        withElementsOf<std::uint16_t>(m_in, [&]<class T>() { loadRows<T>(*window, rows); });
    });
    if (m_taper == 1) {
        m_tileTaper.taperBlock(m_blk, m_walk.border());
    }
}

/// The scale is a power of two, therefore the margins may be filled from scaled pixels.
template <class T>
void CBlockProcP3::loadRows(const TileWindow& window, cv::Range rows) {
    using Source = typename Channels<T>::Source;
    T* const scratch = m_scratch.ptr<T>(rows.start);
    const auto* const source = reinterpret_cast<const Source*>(m_in.ptr(window.y + rows.start)) +
                               static_cast<std::size_t>(window.x) * kChannels;
    for (std::size_t c = 0; c < kChannels; ++c) {
        loadWindowRows(m_blk[c], window, rows, [&](cv::Mat& part) {
            Channels<T>::kToPlane(source + c, stepOf(m_in), scratch, stepOf(m_scratch), part.cols,
                                  part.rows);
            PixelDepth<T>::kToFloat(scratch, stepOf(m_scratch), part.ptr<float>(), stepOf(part),
                                    part.cols, part.rows);
            scalePlane(part, 1.0f / Channels<T>::kFullScale);
        });
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
    m_strip.beginTile(m_walk);
    const cv::Rect useful(m_walk.border(), m_walk.border(), width, height);
    forRowChunks(width, height, [&](cv::Range rows) {
        withElementsOf<std::uint16_t>(m_in, [&]<class T>() { storeRows<T>(useful, rows); });
    });
}

template <class T>
void CBlockProcP3::storeRows(const cv::Rect& useful, cv::Range rows) {
    T* const scratch = m_scratch.ptr<T>(rows.start);
    for (std::size_t c = 0; c < kChannels; ++c) {
        cv::Mat part = m_blk[c](useful).rowRange(rows);
        scalePlane(part, Channels<T>::kFullScale);
        m_strip.fadeIn<T>(part, rows.start, c);
        PixelDepth<T>::kFromFloat(part.ptr<float>(), stepOf(part), scratch, stepOf(m_scratch),
                                  part.cols, part.rows, kToNearestEven);
        Channels<T>::kFromPlane(scratch, stepOf(m_scratch), m_strip.elementsOf<T>(rows.start, c),
                                m_strip.step(), part.cols, part.rows);
    }
}

void CBlockProcP3::mergeRowOfTiles() {
    if (m_walk.overlapY() < 0) {
        throw kRowGap;
    }
    // The sums are rounded to single precision before they are truncated.
    withElementsOf<std::uint16_t>(m_in,
                                  [&]<class T>() { m_strip.mergeInto<T, float>(m_out, m_walk); });
}

} // namespace vel
