#include "velimproclib/veldeblurcv/detail/DetailStage.h"

#include "velimproclib/primitives/base/Team.h"
#include "velimproclib/veldeblurcv/detail/enhanceHalf.h"
#include "velimproclib/veldeblurcv/detail/HalfTiles.h"

namespace vel {

namespace {

/// Rows of each half beyond the middle of the tile. The merge uses only rows far enough from the
/// half's own edge.
constexpr std::int32_t kExtraRows = 24;

} // namespace

CDetailStage::CDetailStage(std::int32_t tileWidth, std::int32_t tileHeight)
    : m_top(tileWidth, tileHeight / 2 + kExtraRows),
      m_bottom(tileWidth, tileHeight / 2 + kExtraRows) {}

void CDetailStage::Proc(cv::Mat& luminance, float detailGain, float detailGamma) {
    cv::Mat top;
    cv::Mat bottom;
    splitTileHalves(luminance, top, bottom, kExtraRows);
    top.copyTo(m_top.pixels);
    bottom.copyTo(m_bottom.pixels);

    const auto enhance = [&](Half& half) {
        enhanceHalf(half.pixels, half.detail, half.guide, half.smoother, half.curve, detailGain,
                    detailGamma);
    };
    runSideBySide([&] { enhance(m_top); }, [&] { enhance(m_bottom); });
    TBMerge(m_top.pixels, m_bottom.pixels, luminance);
}

} // namespace vel
