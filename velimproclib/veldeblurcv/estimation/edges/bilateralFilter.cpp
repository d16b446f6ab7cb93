#include "velimproclib/veldeblurcv/estimation/edges/bilateralFilter.h"

#include "velimproclib/primitives/base/Team.h"
#include "velimproclib/primitives/base/toFloat.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

// A weight depends on the neighbour's distance, which takes few values, and on the difference of
// two bytes. Therefore all weights are products that a table per distance holds. A vector of pixels
// visits its disc with both sums in registers.

#ifndef VEL_BILATERAL_FILTER_NEIGHBOUR
#define VEL_BILATERAL_FILTER_NEIGHBOUR
namespace vel {
namespace {

/// A pixel of the disc.
struct Neighbour {
    std::ptrdiff_t offset; ///< bytes from the centre
    const float* weights;  ///< by the difference in grey levels
};

} // namespace
} // namespace vel
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/veldeblurcv/estimation/edges/bilateralFilter.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

std::uint8_t filteredPixel(const std::uint8_t* centre, const Neighbour* disc, std::size_t count) {
    float sum = 0.0f;
    float weights = 0.0f;
    for (std::size_t k = 0; k < count; ++k) {
        const int value = centre[disc[k].offset];
        const float weight = disc[k].weights[std::abs(value - *centre)];
        weights += weight;
        sum += static_cast<float>(value) * weight;
    }
    return static_cast<std::uint8_t>(std::lrint(sum / weights));
}

} // namespace

void filterRow(const std::uint8_t* src, std::uint8_t* dst, std::size_t width, const Neighbour* disc,
               std::size_t count) {
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> dInt;
    const hn::Rebind<std::uint8_t, decltype(d)> dByte;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t x = 0;
    for (; x + lanes <= width; x += lanes) {
        const auto centre = hn::PromoteTo(dInt, hn::LoadU(dByte, src + x));
        auto sum = hn::Zero(d);
        auto weights = hn::Zero(d);
        for (std::size_t k = 0; k < count; ++k) {
            const std::uint8_t* const pixels = src + x + disc[k].offset;
            const auto value = hn::PromoteTo(dInt, hn::LoadU(dByte, pixels));
            const auto difference = hn::Abs(hn::Sub(value, centre));
            const auto weight = hn::GatherIndex(d, disc[k].weights, difference);
            weights = hn::Add(weights, weight);
            sum = hn::Add(sum, hn::Mul(hn::ConvertTo(d, value), weight));
        }
        const auto mean = hn::NearestInt(hn::Div(sum, weights));
        hn::StoreU(hn::DemoteTo(dByte, mean), dByte, dst + x);
    }
    for (; x < width; ++x) {
        dst[x] = filteredPixel(src + x, disc, count);
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(filterRow);

namespace {

/// The weights of one distance, by the difference in grey levels.
using WeightTable = std::array<float, 256>;

double exponentOf(float sigma) {
    const double positive = sigma > 0.0f ? static_cast<double>(sigma) : 1.0;
    return -0.5 / (positive * positive);
}

float gaussian(double squaredDistance, double exponent) {
    return toFloat(std::exp(squaredDistance * exponent));
}

/// The pixels within `radius` of a centre, row by row, with the weights of their distances.
class Disc {
public:
    Disc(int radius, float sigmaColor, float sigmaSpace, std::ptrdiff_t step)
        : m_tables(static_cast<std::size_t>(radius * radius + 1)) {
        WeightTable colorWeights;
        for (int level = 0; level < 256; ++level) {
            colorWeights[static_cast<std::size_t>(level)] =
                gaussian(level * level, exponentOf(sigmaColor));
        }
        for (int dy = -radius; dy <= radius; ++dy) {
            for (int dx = -radius; dx <= radius; ++dx) {
                const int squared = dx * dx + dy * dy;
                if (squared > radius * radius) {
                    continue;
                }
                // The square of the rounded root is not always the integer it came from.
                const double distance = std::sqrt(static_cast<double>(squared));
                const float space = gaussian(distance * distance, exponentOf(sigmaSpace));
                WeightTable& table = m_tables[static_cast<std::size_t>(squared)];
                std::transform(colorWeights.begin(), colorWeights.end(), table.begin(),
                               [=](float color) { return space * color; });
                m_neighbours.push_back({dy * step + dx, table.data()});
            }
        }
    }

    const std::vector<Neighbour>& neighbours() const noexcept { return m_neighbours; }

private:
    std::vector<WeightTable> m_tables; ///< by squared distance
    std::vector<Neighbour> m_neighbours;
};

} // namespace

void bilateralFilter(const cv::Mat& src, cv::Mat& dst, int diameter, float sigmaColor,
                     float sigmaSpace) {
    CV_Assert(!src.empty() && src.type() == CV_8UC1);
    const int radius = std::max(diameter / 2, 1);
    cv::Mat padded;
    cv::copyMakeBorder(src, padded, radius, radius, radius, radius,
                       cv::BORDER_REFLECT_101 | cv::BORDER_ISOLATED);
    const Disc disc(radius, sigmaColor, sigmaSpace, static_cast<std::ptrdiff_t>(padded.step[0]));
    const std::vector<Neighbour>& neighbours = disc.neighbours();
    dst.create(src.size(), CV_8UC1);
    forEachRow(dst.rows, [&](int y) {
        HWY_DYNAMIC_DISPATCH(filterRow)
        (padded.ptr(y + radius) + radius, dst.ptr(y), static_cast<std::size_t>(dst.cols),
         neighbours.data(), neighbours.size());
    });
}

} // namespace vel
#endif
