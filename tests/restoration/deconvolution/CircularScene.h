#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/planes/Plane.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>

/// Scenes that are periodic over a square plane, and their blur in double precision.
namespace restoration::test {

inline int wrapped(int position, int side) {
    return (position % side + side) % side;
}

/// Rectangles, a disc and a wave, periodic over `side`.
inline Plane circularScene(int side) {
    Plane plane(side, side);
    const double turn = 2 * 3.14159265358979 / side;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            double value = 0.4 + 0.15 * std::sin(turn * x) * std::cos(2 * turn * y);
            value += std::hypot(x - 0.5 * side, y - 0.45 * side) < 0.25 * side ? 0.25 : 0.0;
            value += (y / 10 + x / 7) % 5 == 0 ? 0.12 : 0.0;
            plane.row(y)[x] = static_cast<float>(value);
        }
    }
    return plane;
}

/// A kernel with sum 1 and no symmetry.
inline Kernel unevenKernel(int width, int height) {
    Kernel kernel{width, height, {}};
    std::mt19937 random(3);
    double sum = 0;
    for (int i = 0; i < width * height; ++i) {
        kernel.values.push_back(static_cast<float>(random() % 1000 + 1));
        sum += static_cast<double>(kernel.values.back());
    }
    for (float& value : kernel.values) {
        value = static_cast<float>(static_cast<double>(value) / sum);
    }
    return kernel;
}

/// The circular convolution, summed in double.
inline Plane blurred(const Plane& plane, const Kernel& kernel) {
    const int side = plane.width();
    Plane result(side, side);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            double sum = 0;
            for (int r = 0; r < kernel.height; ++r) {
                const float* row = plane.row(wrapped(y - (r - kernel.height / 2), side));
                for (int c = 0; c < kernel.width; ++c) {
                    sum += static_cast<double>(kernel.at(r, c)) *
                           static_cast<double>(row[wrapped(x - (c - kernel.width / 2), side)]);
                }
            }
            result.row(y)[x] = static_cast<float>(sum);
        }
    }
    return result;
}

inline Plane copyOf(const Plane& plane) {
    Plane copy(plane.width(), plane.height());
    std::ranges::copy(plane.values(), copy.values().begin());
    return copy;
}

/// Root of the mean squared difference.
inline double distance(const Plane& a, const Plane& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.values().size(); ++i) {
        const double d = static_cast<double>(a.values()[i]) - static_cast<double>(b.values()[i]);
        sum += d * d;
    }
    return std::sqrt(sum / static_cast<double>(a.values().size()));
}

inline double largestDifference(const Plane& a, const Plane& b) {
    double largest = 0;
    for (std::size_t i = 0; i < a.values().size(); ++i) {
        largest = std::max(largest, std::abs(static_cast<double>(a.values()[i]) -
                                             static_cast<double>(b.values()[i])));
    }
    return largest;
}

} // namespace restoration::test
