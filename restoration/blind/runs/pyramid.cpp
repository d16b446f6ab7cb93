#include "restoration/blind/runs/pyramid.h"

#include "restoration/blind/runs/gaussianBlur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace restoration {
namespace {

Plane copyOf(const Plane& plane) {
    Plane copy(plane.width(), plane.height());
    std::ranges::copy(plane.values(), copy.values().begin());
    return copy;
}

/// Four neighbours and their weights for one place between pixels.
struct CubicTaps {
    std::array<int, 4> places{};
    std::array<float, 4> weights{};
};

/// The cubic convolution of Keys with a = -0.75.
double cubicWeight(double distance) {
    constexpr double a = -0.75;
    const double t = std::abs(distance);
    if (t <= 1.0) {
        return ((a + 2.0) * t - (a + 3.0)) * t * t + 1.0;
    }
    return t < 2.0 ? ((a * t - 5.0 * a) * t + 8.0 * a) * t - 4.0 * a : 0.0;
}

/// Taps for `count` places at a distance of `pitch`, centred on a line of `length` pixels. Beyond
/// the line its last pixels repeat.
std::vector<CubicTaps> cubicTaps(int length, int count, double pitch) {
    std::vector<CubicTaps> taps(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const double place = (length - 1) / 2.0 + pitch * (i - (count - 1) / 2.0);
        const int floor = static_cast<int>(std::floor(place));
        for (int k = 0; k < 4; ++k) {
            const int pixel = floor - 1 + k;
            auto& tap = taps[static_cast<std::size_t>(i)];
            tap.places[static_cast<std::size_t>(k)] = std::clamp(pixel, 0, length - 1);
            tap.weights[static_cast<std::size_t>(k)] =
                static_cast<float>(cubicWeight(place - pixel));
        }
    }
    return taps;
}

Plane resampledRows(const Plane& plane, const std::vector<CubicTaps>& taps) {
    Plane result(static_cast<int>(taps.size()), plane.height());
    for (int y = 0; y < plane.height(); ++y) {
        const float* source = plane.row(y);
        float* target = result.row(y);
        for (const CubicTaps& tap : taps) {
            float sum = 0.0f;
            for (std::size_t k = 0; k < 4; ++k) {
                sum += tap.weights[k] * source[tap.places[k]];
            }
            *target++ = sum;
        }
    }
    return result;
}

Plane resampledColumns(const Plane& plane, const std::vector<CubicTaps>& taps) {
    Plane result(plane.width(), static_cast<int>(taps.size()));
    std::ranges::fill(result.values(), 0.0f);
    for (int y = 0; y < result.height(); ++y) {
        const CubicTaps& tap = taps[static_cast<std::size_t>(y)];
        for (std::size_t k = 0; k < 4; ++k) {
            addScaledRow(plane.row(tap.places[k]), tap.weights[k], plane.width(), result.row(y));
        }
    }
    return result;
}

int reducedLength(int length, double scale) {
    return std::max(static_cast<int>(std::floor(length * scale + 0.5)), 1);
}

/// The places between the last pixel and the first one: weights of the first, and of the softened
/// copy.
struct StripWeights {
    std::vector<float> first;
    std::vector<float> soft;

    explicit StripWeights(int length) {
        for (int j = 1; j <= length; ++j) {
            const float t = static_cast<float>(static_cast<double>(j) / (length + 1));
            first.push_back(t);
            soft.push_back(4.0f * t * (1.0f - t));
        }
    }
};

Plane softened(const Plane& strip, int length, const Cancellation& cancellation) {
    const double sigma = std::max(length / 4.0, 1.0);
    return blurred(strip, gaussianTaps(sigma), Reflection::RepeatsLast, cancellation);
}

float blend(float a, float b, float weight) {
    return a * (1.0f - weight) + b * weight;
}

/// Fills the columns right of the picture in the rows of the picture.
void fillColumns(Plane& plane, int width, int height, const Cancellation& cancellation) {
    const int length = plane.width() - width;
    const StripWeights weights(length);
    Plane strip(length, height);
    for (int y = 0; y < height; ++y) {
        const float last = plane.row(y)[width - 1];
        const float first = plane.row(y)[0];
        for (int x = 0; x < length; ++x) {
            strip.row(y)[x] = blend(last, first, weights.first[static_cast<std::size_t>(x)]);
        }
    }
    const Plane soft = softened(strip, length, cancellation);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < length; ++x) {
            plane.row(y)[width + x] =
                blend(strip.row(y)[x], soft.row(y)[x], weights.soft[static_cast<std::size_t>(x)]);
        }
    }
}

/// Fills the rows below the picture, over the whole width.
void fillRows(Plane& plane, int height, const Cancellation& cancellation) {
    const int length = plane.height() - height;
    const StripWeights weights(length);
    Plane strip(plane.width(), length);
    for (int y = 0; y < length; ++y) {
        for (int x = 0; x < plane.width(); ++x) {
            strip.row(y)[x] = blend(plane.row(height - 1)[x], plane.row(0)[x],
                                    weights.first[static_cast<std::size_t>(y)]);
        }
    }
    const Plane soft = softened(strip, length, cancellation);
    for (int y = 0; y < length; ++y) {
        for (int x = 0; x < plane.width(); ++x) {
            plane.row(height + y)[x] =
                blend(strip.row(y)[x], soft.row(y)[x], weights.soft[static_cast<std::size_t>(y)]);
        }
    }
}

} // namespace

Plane reduced(const Plane& picture, double scale, const Cancellation& cancellation) {
    if (scale >= 0.999) {
        return copyOf(picture);
    }
    const double sigma = 0.5 * std::sqrt(1.0 / (scale * scale) - 1.0);
    const Plane soft = blurred(picture, gaussianTaps(sigma), Reflection::SkipsLast, cancellation);
    const auto columns =
        cubicTaps(picture.width(), reducedLength(picture.width(), scale), 1.0 / scale);
    const auto rows =
        cubicTaps(picture.height(), reducedLength(picture.height(), scale), 1.0 / scale);
    return resampledColumns(resampledRows(soft, columns), rows);
}

Plane wrappedAround(const Plane& picture, int side, const Cancellation& cancellation) {
    Plane plane(side, side);
    for (int y = 0; y < picture.height(); ++y) {
        std::copy_n(picture.row(y), picture.width(), plane.row(y));
    }
    fillColumns(plane, picture.width(), picture.height(), cancellation);
    fillRows(plane, picture.height(), cancellation);
    return plane;
}

} // namespace restoration
