#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "restoration/blind/runs/gaussianBlur.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "restoration/blind/runs/gaussianBlur.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

HWY_BEFORE_NAMESPACE();
namespace restoration::HWY_NAMESPACE {

void addScaled(const float* HWY_RESTRICT row, float factor, int width, float* HWY_RESTRICT sum) {
    for (int x = 0; x < width; ++x) {
        sum[x] += factor * row[x];
    }
}

/// sum[x] += factor (left[x] + right[x])
void addScaledPair(const float* HWY_RESTRICT left, const float* HWY_RESTRICT right, float factor,
                   int width, float* HWY_RESTRICT sum) {
    for (int x = 0; x < width; ++x) {
        sum[x] += factor * (left[x] + right[x]);
    }
}

} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace restoration {

HWY_EXPORT(addScaled);
HWY_EXPORT(addScaledPair);

namespace {

/// The place inside 0..length - 1 that shows at `place`.
int reflected(int place, int length, Reflection reflection) {
    const int skip = reflection == Reflection::SkipsLast ? 1 : 0;
    while (place < 0 || place >= length) {
        if (length == 1) {
            return 0;
        }
        place = place < 0 ? -place - 1 + skip : 2 * length - 1 - skip - place;
    }
    return place;
}

Plane blurredAlongRows(const Plane& plane, const std::vector<float>& taps, Reflection reflection,
                       const Cancellation& cancellation) {
    const int width = plane.width();
    const int reach = static_cast<int>(taps.size()) - 1;
    Plane result(width, plane.height());
    std::vector<float> wide(static_cast<std::size_t>(width) + 2 * static_cast<std::size_t>(reach));
    for (int y = 0; y < plane.height(); ++y) {
        cancellation.check();
        const float* row = plane.row(y);
        float* middle = wide.data() + reach;
        std::copy_n(row, width, middle);
        for (int d = 1; d <= reach; ++d) {
            middle[-d] = row[reflected(-d, width, reflection)];
            middle[width - 1 + d] = row[reflected(width - 1 + d, width, reflection)];
        }
        std::fill_n(result.row(y), width, 0.0f);
        addScaledRow(middle, taps[0], width, result.row(y));
        for (int d = 1; d <= reach; ++d) {
            HWY_DYNAMIC_DISPATCH(addScaledPair)
            (middle - d, middle + d, taps[static_cast<std::size_t>(d)], width, result.row(y));
        }
    }
    return result;
}

Plane blurredAlongColumns(const Plane& plane, const std::vector<float>& taps, Reflection reflection,
                          const Cancellation& cancellation) {
    const int height = plane.height();
    const int reach = static_cast<int>(taps.size()) - 1;
    Plane result(plane.width(), height);
    for (int y = 0; y < height; ++y) {
        cancellation.check();
        std::fill_n(result.row(y), plane.width(), 0.0f);
        addScaledRow(plane.row(y), taps[0], plane.width(), result.row(y));
        for (int d = 1; d <= reach; ++d) {
            HWY_DYNAMIC_DISPATCH(addScaledPair)
            (plane.row(reflected(y - d, height, reflection)),
             plane.row(reflected(y + d, height, reflection)), taps[static_cast<std::size_t>(d)],
             plane.width(), result.row(y));
        }
    }
    return result;
}

} // namespace

std::vector<float> gaussianTaps(double sigma) {
    const int reach = (static_cast<int>(std::floor(8.0 * sigma + 1.5)) | 1) / 2;
    std::vector<double> taps;
    double sum = 0.0;
    for (int d = 0; d <= reach; ++d) {
        taps.push_back(std::exp(-0.5 * d * d / (sigma * sigma)));
        sum += d == 0 ? taps.back() : 2.0 * taps.back();
    }
    std::vector<float> rounded;
    std::ranges::transform(taps, std::back_inserter(rounded),
                           [&](double tap) { return static_cast<float>(tap / sum); });
    return rounded;
}

Plane blurred(const Plane& plane, const std::vector<float>& taps, Reflection reflection,
              const Cancellation& cancellation) {
    return blurredAlongColumns(blurredAlongRows(plane, taps, reflection, cancellation), taps,
                               reflection, cancellation);
}

void addScaledRow(const float* row, float factor, int width, float* sum) noexcept {
    HWY_DYNAMIC_DISPATCH(addScaled)(row, factor, width, sum);
}

} // namespace restoration
#endif
