#include "velimproclib/tiles/BlockProcP1.h"

#include "velimproclib/images/stepOf.h"
#include "velimproclib/tiles/forRowChunks.h"
#include "velimproclib/tiles/imageExtendBorder.h"
#include "velimproclib/tiles/loadWindowRows.h"
#include "velimproclib/tiles/PixelDepth.h"

#include <span>

namespace vel {

namespace {

/// The level that 1.0 stands for, and its inverse.
template <class T>
struct Scale;

template <>
struct Scale<std::uint8_t> {
    static constexpr float kToUnit = 0.003921569f;
    static constexpr float kFull = 255.0f;
};

template <>
struct Scale<std::int16_t> {
    static constexpr float kToUnit = 3.051851e-05f;
    static constexpr float kFull = 32767.0f;
};

} // namespace

int CBlockProcP1::init(const cv::Mat& in, const cv::Mat& out, std::int32_t blockW,
                       std::int32_t blockH, bool align16, std::int32_t overlap, std::int32_t border,
                       std::int32_t taper) {
    m_in = in;
    m_out = out;
    if (m_in.type() != CV_8UC1 && m_in.type() != CV_16SC1) {
        throw "CBlockProcP1::init - m_in.type() != CV_8UC1 && m_in.type() != CV_16SC1";
    }
    if (!m_out.empty() && m_out.size() != m_in.size()) {
        throw "CBlockProcP1::init - in and out is not the same size and out is not empty";
    }
    if (!m_out.empty() && m_out.type() != m_in.type()) {
        throw "CBlockProcP1::init - in and out are not of the same type";
    }
    if (border < 0) {
        throw "CBlockProcP1::init - border < 0";
    }
    m_taper = taper;
    const std::uint8_t mode = align16 ? 1 : 0;
    m_walk = TileWalk(m_in.cols, m_in.rows, {blockW, blockH, mode, overlap, border});
    // Without a window the first block fails, and its size means nothing.
    if (m_walk.window()) {
        m_blk.create(m_walk.tileHeight(), m_walk.tileWidth(), CV_32FC1);
        m_strip.create(m_walk, m_in.type());
    }
    return 1;
}

cv::Mat* CBlockProcP1::nextBlock() {
    if (!m_walk.atFirstTile() && !advance()) {
        return nullptr;
    }
    convertBlkDupBorder();
    return &m_blk;
}

bool CBlockProcP1::advance() {
    const WalkState state = m_walk.advance();
    if (state == WalkState::kStuck) {
        // The overlap takes up the whole block: the walk would never end.
        throw "CBlockProcP1::advance - step < 1";
    }
    return state == WalkState::kTileAhead;
}

int CBlockProcP1::convertBlkDupBorder() {
    const std::optional<TileWindow> window = m_walk.window();
    if (!window) {
        throw "CBlockProcP1::convertBlkDupBorder - roiSize < 1";
    }
    forRowChunks(window->width, window->height, [&](cv::Range rows) {
        withElementsOf<std::int16_t>(m_in, [&]<class T>() { loadRows<T>(*window, rows); });
    });
    if (m_taper == 1) {
        m_tileTaper.taperBlock(std::span(&m_blk, 1), m_walk.border());
    }
    return 1;
}

template <class T>
void CBlockProcP1::loadRows(const TileWindow& window, cv::Range rows) {
    loadWindowRows(m_blk, window, rows, [&](cv::Mat& part) {
        const T* source = m_in.ptr<T>(window.y + rows.start) + window.x;
        PixelDepth<T>::kToFloat(source, stepOf(m_in), part.ptr<float>(), stepOf(part), part.cols,
                                part.rows);
        scalePlane(part, Scale<T>::kToUnit);
    });
}

int CBlockProcP1::imageExtendBorder(cv::Mat& inOut, std::int32_t left, std::int32_t top,
                                    std::int32_t right, std::int32_t bottom) {
    if (inOut.type() != CV_32FC1) {
        throw "CBlockProcP1::imageExtendBorder - inOut.type()!=CV_32FC1";
    }
    vel::imageExtendBorder(inOut, left, top, right, bottom);
    return 1;
}

void CBlockProcP1::doneABlock() {
    if (m_walk.overlapX() < 0) {
        throw "CBlockProcP1::doneABlock - ovlpX < 0";
    }
    if (!m_out.empty()) {
        storeBlock();
        if (m_walk.endsARow()) {
            mergeRowOfBlocks();
        }
    }
    m_walk.noteStored();
}

void CBlockProcP1::storeBlock() {
    const std::int32_t width = m_walk.storedWidth();
    const std::int32_t height = m_walk.storedHeight();
    if (width < 1 || height < 1) {
        return;
    }
    m_strip.beginTile(m_walk);
    cv::Mat useful = m_blk(cv::Rect(m_walk.border(), m_walk.border(), width, height));
    forRowChunks(width, height, [&](cv::Range rows) {
        withElementsOf<std::int16_t>(m_in, [&]<class T>() { storeRows<T>(useful, rows); });
    });
}

template <class T>
void CBlockProcP1::storeRows(cv::Mat& useful, cv::Range rows) {
    cv::Mat part = useful.rowRange(rows);
    scalePlane(part, Scale<T>::kFull);
    m_strip.fadeIn<T>(part, rows.start, 0);
    PixelDepth<T>::kFromFloat(part.ptr<float>(), stepOf(part), m_strip.elementsOf<T>(rows.start, 0),
                              m_strip.step(), part.cols, part.rows, kToNearestEven);
}

void CBlockProcP1::mergeRowOfBlocks() {
    if (m_walk.overlapY() < 0) {
        throw "CBlockProcP1::doneABlock - ovlpY < 0";
    }
    // The sums are truncated as doubles, unlike those of CBlockProcP3.
    withElementsOf<std::int16_t>(m_in,
                                 [&]<class T>() { m_strip.mergeInto<T, double>(m_out, m_walk); });
}

} // namespace vel
