#include "velimproclib/tiles/GaussianBlur.h"

#include "velimproclib/primitives/base/TeamLoop.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/tiles/GaussianBlur.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

/// Adds `tap` times the vectors at `pixels` to the sums.
template <std::size_t kVectors, class D>
HWY_INLINE void addPixels(D d, float tap, const float* pixels, hn::Vec<D> (&sums)[kVectors]) {
    for (std::size_t v = 0; v < kVectors; ++v) {
        const auto values = hn::LoadU(d, pixels + v * hn::Lanes(d));
        sums[v] = hn::Add(sums[v], hn::Mul(hn::Set(d, tap), values));
    }
}

/// The same with the sums of two pixels.
template <std::size_t kVectors, class D>
HWY_INLINE void addPairs(D d, float tap, const float* above, const float* below,
                         hn::Vec<D> (&sums)[kVectors]) {
    for (std::size_t v = 0; v < kVectors; ++v) {
        const std::size_t offset = v * hn::Lanes(d);
        const auto values = hn::Add(hn::LoadU(d, above + offset), hn::LoadU(d, below + offset));
        sums[v] = hn::Add(sums[v], hn::Mul(hn::Set(d, tap), values));
    }
}

/// The first pass on `kVectors` vectors of a row. `pixels` starts `reach` before the first target.
struct Along {
    std::span<const float> halfTaps;
    const float* pixels;

    template <std::size_t kVectors, class D>
    HWY_INLINE void addTaps(D d, std::size_t x, hn::Vec<D> (&sums)[kVectors]) const {
        const std::size_t reach = halfTaps.size() - 1;
        const float* pixel = pixels + x;
        for (std::size_t k = reach; k > 0; --k) {
            addPixels<kVectors>(d, halfTaps[k], pixel++, sums);
        }
        for (std::size_t k = 0; k <= reach; ++k) {
            addPixels<kVectors>(d, halfTaps[k], pixel++, sums);
        }
    }
};

/// The second pass. `centre` is the row of the target in the plane of the first pass.
struct Across {
    std::span<const float> halfTaps;
    const float* centre;
    std::ptrdiff_t step; ///< floats from row to row

    template <std::size_t kVectors, class D>
    HWY_INLINE void addTaps(D d, std::size_t x, hn::Vec<D> (&sums)[kVectors]) const {
        const float* above = centre + x;
        const float* below = above;
        addPixels<kVectors>(d, halfTaps[0], above, sums);
        for (std::size_t k = 1; k < halfTaps.size(); ++k) {
            above -= step;
            below += step;
            addPairs<kVectors>(d, halfTaps[k], above, below, sums);
        }
    }
};

template <std::size_t kVectors, class D, class Pass>
HWY_INLINE void sumBlock(D d, const Pass& pass, std::size_t x, float* target) {
    hn::Vec<D> sums[kVectors];
    for (auto& sum : sums) {
        sum = hn::Zero(d);
    }
    pass.template addTaps<kVectors>(d, x, sums);
    for (std::size_t v = 0; v < kVectors; ++v) {
        hn::StoreU(sums[v], d, target + x + v * hn::Lanes(d));
    }
}

/// Sums a row in blocks of as many vectors as fit: the taps of one vector are a chain of dependent
/// sums, and several chains side by side hide its latency. The last block is moved back to the end
/// of the row and makes some pixels a second time.
template <std::size_t kVectors, class Pass>
void sumRow(const Pass& pass, float* HWY_RESTRICT target, std::size_t count) {
    if constexpr (kVectors == 0) {
        for (std::size_t x = 0; x < count; ++x) {
            sumBlock<1>(hn::CappedTag<float, 1>(), pass, x, target);
        }
    } else {
        const hn::ScalableTag<float> d;
        const std::size_t block = kVectors * hn::Lanes(d);
        if (count < block) {
            sumRow<kVectors / 2>(pass, target, count);
            return;
        }
        for (std::size_t x = 0; x < count; x += block) {
            sumBlock<kVectors>(d, pass, std::min(x, count - block), target);
        }
    }
}

constexpr std::size_t kMostVectors = 8;

void blurAlong(std::span<const float> halfTaps, const float* pixels, float* target,
               std::size_t count) {
    sumRow<kMostVectors>(Along{halfTaps, pixels}, target, count);
}

void blurAcross(std::span<const float> halfTaps, const float* centre, std::ptrdiff_t step,
                float* target, std::size_t count) {
    sumRow<kMostVectors>(Across{halfTaps, centre, step}, target, count);
}

} // namespace
} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(blurAlong);
HWY_EXPORT(blurAcross);

std::vector<float> gaussianHalfTaps(int side, double sigma) {
    const double scale = -0.5 / (sigma * sigma);
    std::vector<double> weights{1.0};
    double sum = 0.0;
    for (int distance = side / 2; distance > 0; --distance) {
        sum += std::exp(distance * distance * scale);
    }
    const double share = 1.0 / (2.0 * sum + 1.0);
    std::vector<float> taps;
    for (int distance = 0; distance <= side / 2; ++distance) {
        taps.push_back(static_cast<float>(std::exp(distance * distance * scale) * share));
    }
    return taps;
}

void GaussianBlur::blur(const cv::Mat& source, cv::Mat& along, cv::Mat& blurred) const {
    constexpr int kRowsPerBand = 32;
    const int rows = source.rows - 2 * reach();
    const int columns = source.cols - 2 * reach();
    along.create(source.rows, columns, CV_32FC1);
    blurred.create(rows, columns, CV_32FC1);
    const auto count = static_cast<std::size_t>(columns);
    forEachRowBand(source.rows, kRowsPerBand, [&](int begin, int end) {
        for (int y = begin; y < end; ++y) {
            HWY_DYNAMIC_DISPATCH(blurAlong)
            (m_halfTaps, source.ptr<float>(y), along.ptr<float>(y), count);
        }
    });
    const auto step = static_cast<std::ptrdiff_t>(along.step1());
    forEachRowBand(rows, kRowsPerBand, [&](int begin, int end) {
        for (int y = begin; y < end; ++y) {
            HWY_DYNAMIC_DISPATCH(blurAcross)
            (m_halfTaps, along.ptr<float>(y + reach()), step, blurred.ptr<float>(y), count);
        }
    });
}

} // namespace vel
#endif
