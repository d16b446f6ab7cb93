#include "restoration/strength/ErrorWeights.h"

#include "tests/restoration/deconvolution/CircularScene.h"

#include <cmath>
#include <complex>
#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr int kSide = 64;
constexpr double kTurn = 2 * 3.14159265358979 / kSide;

/// |K|^2 of a kernel at a frequency, in double precision.
double powerAt(const Kernel& kernel, int v, int u) {
    std::complex<double> sum = 0.0;
    for (int r = 0; r < kernel.height; ++r) {
        for (int c = 0; c < kernel.width; ++c) {
            sum += static_cast<double>(kernel.at(r, c)) * std::polar(1.0, -kTurn * (v * r + u * c));
        }
    }
    return std::norm(sum);
}

TEST(ErrorWeights, ScaleEveryWaveByItsOwnFactor) {
    const Kernel kernel = test::unevenKernel(5, 7);
    const BlurSpectrum blur(kernel, kSide);
    const ErrorWeights weights(blur);
    TileScratch scratch(kSide);
    struct Frequency {
        int v;
        int u;
    };
    // The last four share storage.
    for (const Frequency f :
         {Frequency{3, 17}, {60, 5}, {9, 0}, {9, 32}, {0, 0}, {0, 32}, {32, 0}, {32, 32}}) {
        Plane wave(kSide, kSide);
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                wave.row(y)[x] = static_cast<float>(std::cos(kTurn * (f.v * y + f.u * x)));
            }
        }
        Plane weighted(kSide, kSide);
        weights.apply(wave, weighted, scratch, Cancellation());
        const double factor = 1.0 / (powerAt(kernel, f.v, f.u) + 0.03);
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                ASSERT_NEAR(static_cast<double>(weighted.row(y)[x]),
                            factor * static_cast<double>(wave.row(y)[x]), 2e-4)
                    << f.v << ' ' << f.u;
            }
        }
    }
}

} // namespace
} // namespace restoration
