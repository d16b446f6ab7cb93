#include "velimproclib/tiles/BlockProcP1.h"

#include "velimproclib/images/stepOf.h"
#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"
#include "velimproclib/primitives/pixels/Conversions.h"
#include "velimproclib/tiles/fillRamp.h"
#include "velimproclib/tiles/forRowChunks.h"
#include "velimproclib/tiles/imageExtendBorder.h"
#include "velimproclib/tiles/stripBlends.h"

#include <algorithm>
#include <span>

namespace vel {

namespace {

/// The scale and the conversions of an element type.
template <class T>
struct Depth;

template <>
struct Depth<std::uint8_t> {
    static constexpr float kToUnit = 0.003921569f;
    static constexpr float kFullScale = 255.0f;
    static constexpr auto kToFloat = convertU8toF32;
    static constexpr auto kFromFloat = convertF32toU8;
};

template <>
struct Depth<std::int16_t> {
    static constexpr float kToUnit = 3.051851e-05f;
    static constexpr float kFullScale = 32767.0f;
    static constexpr auto kToFloat = convertS16toF32;
    static constexpr auto kFromFloat = convertF32toS16;
};

bool isEightBits(const cv::Mat& image) {
    return image.depth() == CV_8U;
}

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
    m_border = border;
    m_taper = taper;
    const std::uint8_t mode = align16 ? 1 : 0;
    m_walk = TileWalk(m_in.cols, m_in.rows, {blockW, blockH, mode, overlap, border});
    TileWindow window;
    // Without a window the first block fails, and its size means nothing.
    if (m_walk.windowOf(m_border, window)) {
        const std::int32_t width = m_walk.widthWith(m_border);
        const std::int32_t height = m_walk.heightWith(m_border);
        m_blk.create(height, width, CV_32FC1);
        m_strip.create(std::max(m_walk.m_roiH, 0), m_walk.m_imW, m_in.type());
        m_ramp.assign(static_cast<std::size_t>(std::max(width, height)) + 1, 0.0f);
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
        // The overlap takes up the whole block; walking on would never end.
        throw "CBlockProcP1::advance - step < 1";
    }
    return state == WalkState::kTileAhead;
}

int CBlockProcP1::convertBlkDupBorder() {
    TileWindow window;
    if (!m_walk.windowOf(m_border, window)) {
        throw "CBlockProcP1::convertBlkDupBorder - roiSize < 1";
    }
    if (isEightBits(m_in)) {
        loadWindow<std::uint8_t>(window);
    } else {
        loadWindow<std::int16_t>(window);
    }
    if (m_taper == 1) {
        m_tileTaper.taperBlock(std::span(&m_blk, 1), m_border);
    }
    return 1;
}

template <class T>
void CBlockProcP1::loadWindow(const TileWindow& window) {
    cv::Mat loaded = m_blk(cv::Rect(window.left, window.top, window.width, window.height));
    Depth<T>::kToFloat(m_in.ptr<T>(window.y) + window.x, stepOf(m_in), loaded.ptr<float>(),
                       stepOf(loaded), window.width, window.height);
    imageExtendBorder(m_blk, window.left, window.top, window.right, window.bottom);
    scaleBlock(Depth<T>::kToUnit);
}

int CBlockProcP1::imageExtendBorder(cv::Mat& inOut, std::int32_t left, std::int32_t top,
                                    std::int32_t right, std::int32_t bottom) {
    if (inOut.type() != CV_32FC1) {
        throw "CBlockProcP1::imageExtendBorder - inOut.type()!=CV_32FC1";
    }
    vel::imageExtendBorder(inOut, left, top, right, bottom);
    return 1;
}

void CBlockProcP1::scaleBlock(float factor) {
    mulConstInPlaceF32(factor, m_blk.ptr<float>(), stepOf(m_blk), m_blk.cols, m_blk.rows);
}

void CBlockProcP1::doneABlock() {
    if (m_walk.overlapX() < 0) {
        throw "CBlockProcP1::doneABlock - ovlpX < 0";
    }
    if (!m_out.empty()) {
        if (isEightBits(m_in)) {
            storeBlock<std::uint8_t>();
        } else {
            storeBlock<std::int16_t>();
        }
    }
    m_walk.noteStored();
}

template <class T>
void CBlockProcP1::storeBlock() {
    const std::int32_t width = m_walk.storedWidth();
    const std::int32_t height = m_walk.storedHeight();
    if (width >= 1 && height >= 1) {
        const cv::Mat useful = m_blk(cv::Rect(m_border, m_border, width, height));
        const auto overlapX = static_cast<std::int32_t>(m_walk.overlapX());
        scaleBlock(Depth<T>::kFullScale);
        fillRamp(m_ramp, overlapX);
        forRowChunks(overlapX, height, [&](cv::Range rows) {
            for (std::int32_t y = rows.start; y < rows.end; ++y) {
                fadeInColumns(m_blk.ptr<float>(m_border + y) + m_border,
                              m_strip.ptr<T>(y) + m_walk.m_curX, 1, m_ramp.data(),
                              static_cast<std::size_t>(overlapX));
            }
        });
        Depth<T>::kFromFloat(useful.ptr<float>(), stepOf(useful), m_strip.ptr<T>(0) + m_walk.m_curX,
                             stepOf(m_strip), width, height, kToNearestEven);
    }
    if (m_walk.endsARow()) {
        mergeRowOfBlocks<T>();
    }
}

template <class T>
void CBlockProcP1::mergeRowOfBlocks() {
    if (m_walk.overlapY() < 0) {
        throw "CBlockProcP1::doneABlock - ovlpY < 0";
    }
    mergeStrip<T>(m_strip, m_out, m_walk, m_ramp);
}

} // namespace vel
