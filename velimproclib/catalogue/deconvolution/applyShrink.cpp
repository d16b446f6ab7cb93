#include "velimproclib/catalogue/deconvolution/applyShrink.h"

#include "velimproclib/primitives/arithmetic/Lookups.h"
#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"
#include "velimproclib/veldeblurcv/deconvolution/betaSchedule.h"
#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

#include <algorithm>
#include <cstdint>

namespace vel {

void applyShrink(cv::Mat& w, cv::Mat& v, double alpha, double beta) {
    const StoredShrink row = storedShrink(shrinkLevel(beta, kBetaRate), shrinkAlphaIndex(alpha));
    const auto vStep = static_cast<std::int32_t>(v.step);
    const auto wStep = static_cast<std::int32_t>(w.step);
    clampBelowInPlaceF32(v.ptr<float>(), vStep, v.cols, v.rows, row.levels[0]);
    clampAboveInPlaceF32(v.ptr<float>(), vStep, v.cols, v.rows, row.levels[row.knots - 1]);
    lutLinearF32(v.ptr<float>(), vStep, w.ptr<float>(), wStep, v.cols, v.rows, row.values,
                 row.levels, row.knots);
}

void applyShrink(cv::Mat& w, const cv::Mat& v, const BuiltShrinkTable& table, double beta) {
    const int level = shrinkLevel(beta, kBetaRate);
    for (int r = 0; r < v.rows; ++r) {
        std::transform(v.ptr<float>(r), v.ptr<float>(r) + v.cols, w.ptr<float>(r),
                       [&](float gradient) { return table.at(level, gradient); });
    }
}

} // namespace vel
