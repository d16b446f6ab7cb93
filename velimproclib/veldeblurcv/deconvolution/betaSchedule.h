#pragma once

#include <numbers>

/// The schedule of the deconvolution. Every plane takes the same six passes, with the penalty
/// weight beta at 1, 2.83, 8, 22.6, 64 and 181; no other rule ends the iteration.
namespace vel {

inline constexpr double kFirstBeta = 1.0;
inline constexpr double kBetaRate = std::numbers::sqrt2 + std::numbers::sqrt2;
inline constexpr double kBetaLimit = 256.0;

/// Calls pass(beta) for every weight of the schedule, in rising order.
template <class Pass>
void forEachBeta(const Pass& pass) {
    for (double beta = kFirstBeta; beta < kBetaLimit; beta = kBetaRate * beta) {
        pass(beta);
    }
}

} // namespace vel
