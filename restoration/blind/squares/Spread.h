#pragma once

#include "restoration/blind/squares/SquareKernel.h"

#include <cmath>
#include <numbers>

namespace restoration {

/// The second moments of a kernel of sum 1 about its centre of mass, in square pixels.
struct Spread {
    double columns = 0.0;
    double rows = 0.0;
    double mixed = 0.0;

    explicit Spread(const SquareKernel& kernel) {
        double right = 0.0;
        double down = 0.0;
        for (int y = 0; y < kernel.side; ++y) {
            for (int x = 0; x < kernel.side; ++x) {
                right += x * kernel.at(y, x);
                down += y * kernel.at(y, x);
            }
        }
        for (int y = 0; y < kernel.side; ++y) {
            for (int x = 0; x < kernel.side; ++x) {
                columns += (x - right) * (x - right) * kernel.at(y, x);
                rows += (y - down) * (y - down) * kernel.at(y, x);
                mixed += (x - right) * (y - down) * kernel.at(y, x);
            }
        }
    }

    double mean() const { return (columns + rows) / 2.0; }
    /// Along the direction of the largest spread.
    double largest() const { return mean() + std::hypot((columns - rows) / 2.0, mixed); }
    /// Across it; rounding can make it negative.
    double smallest() const { return mean() - std::hypot((columns - rows) / 2.0, mixed); }
    /// The direction of the largest spread, in degrees counter-clockwise from the horizontal; rows
    /// count downwards.
    double degrees() const {
        return -0.5 * std::atan2(2.0 * mixed, columns - rows) * 180.0 / std::numbers::pi;
    }
};

} // namespace restoration
