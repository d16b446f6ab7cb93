#include "restoration/blind/refine/displacedSystem.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

namespace restoration {
namespace {

constexpr int kReach = kDisplacementReach;
constexpr std::size_t kTaps = 2 * static_cast<std::size_t>(kReach) + 1;
using Taps = std::array<double, kTaps>;

/// A Gaussian of `sigma` without its frequencies above those of the grid, under a window.
double bandLimitedGaussian(double x, double sigma) {
    constexpr int kSteps = 128;
    constexpr double kStep = std::numbers::pi / kSteps;
    const double angle = std::numbers::pi * x / (kReach + 1);
    const double window = x == 0.0 ? 1.0 : std::sin(angle) / angle;
    double sum = 0.0;
    for (int i = 0; i < kSteps; ++i) {
        const double frequency = (i + 0.5) * kStep;
        sum += std::cos(frequency * x) * std::exp(-0.5 * sigma * sigma * frequency * frequency);
    }
    return window * sum / kSteps;
}

/// The weights of the samples at -kReach..kReach for the value at -`move`.
Taps tapsFor(double move, double sigma) {
    Taps taps{};
    double sum = 0.0;
    for (std::size_t i = 0; i < kTaps; ++i) {
        taps[i] = bandLimitedGaussian(static_cast<double>(i) - kReach + move, sigma);
        sum += taps[i];
    }
    for (double& tap : taps) {
        tap /= sum;
    }
    return taps;
}

/// The central square of side `inner` of the square `values` of side `side`, filtered. `side`
/// exceeds `inner` by at least 2 kReach.
std::vector<double> filtered(const std::vector<double>& values, int side, int inner,
                             const Taps& alongRows, const Taps& alongColumns) {
    const int margin = (side - inner) / 2;
    const auto index = [](int row, int column, int width) {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(column);
    };
    std::vector<double> rows(index(side, 0, inner));
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < inner; ++x) {
            double sum = 0.0;
            for (std::size_t i = 0; i < kTaps; ++i) {
                sum += alongRows[i] * values[index(y, x + margin - kReach, side) + i];
            }
            rows[index(y, x, inner)] = sum;
        }
    }
    std::vector<double> result(index(inner, 0, inner));
    for (int y = 0; y < inner; ++y) {
        for (int x = 0; x < inner; ++x) {
            double sum = 0.0;
            for (std::size_t i = 0; i < kTaps; ++i) {
                sum += alongColumns[i] *
                       rows[index(y + margin - kReach + static_cast<int>(i), x, inner)];
            }
            result[index(y, x, inner)] = sum;
        }
    }
    return result;
}

} // namespace

KernelSystem displacedSystem(const KernelSystem& system, const Displacement& move, double sigma) {
    const int radius = system.radius - kReach;
    const Taps still = tapsFor(0.0, std::numbers::sqrt2 * sigma);
    return {radius,
            filtered(system.autocorrelation, 4 * system.radius + 1, 4 * radius + 1, still, still),
            filtered(system.correlation, 2 * system.radius + 1, 2 * radius + 1,
                     tapsFor(move.right, sigma), tapsFor(move.down, sigma))};
}

} // namespace restoration
