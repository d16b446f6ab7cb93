#include "restoration/secondpass/DctFilter.h"

#include "tests/restoration/deconvolution/CircularScene.h"
#include "tests/support/EachTarget.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <optional>
#include <random>
#include <vector>

namespace restoration {
namespace {

using test::circularScene;
using test::copyOf;
using test::distance;
using test::largestDifference;

constexpr std::array<BlockLattice, 6> kLattices{
    {{1, 0, 0, 0}, {2, 0, 0, 0}, {2, 1, 1, 0}, {4, 0, 0, 0}, {4, 3, 2, 2}, {4, 1, 3, 1}}};

Plane noisePlane(int side, float deviation, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<float> values(0.0f, 1.0f);
    Plane plane(side, side);
    for (float& value : plane.values()) {
        value = deviation * values(random);
    }
    return plane;
}

Plane sum(const Plane& a, const Plane& b) {
    Plane result = copyOf(a);
    for (std::size_t i = 0; i < result.values().size(); ++i) {
        result.values()[i] += b.values()[i];
    }
    return result;
}

DctNoise even(float variance) {
    DctNoise noise;
    noise.variances.fill(variance);
    return noise;
}

/// Variances that differ from coefficient to coefficient.
DctVariances uneven(float variance) {
    DctVariances variances;
    for (std::size_t k = 0; k < variances.size(); ++k) {
        variances[k] = variance * (0.3f + 0.02f * static_cast<float>(k * 37 % 64));
    }
    return variances;
}

/// The filter by its formula, in double and block by block.
class PlainFilter {
public:
    PlainFilter(const Plane& noisy, const DctNoise& noise, double threshold)
        : m_noisy(noisy), m_noise(noise), m_threshold(threshold) {}

    Plane run(const BlockLattice& lattice) const {
        const int side = m_noisy.width();
        const auto pixels = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
        std::vector<double> sums(pixels, 0.0);
        std::vector<double> weights(pixels, 0.0);
        for (int i = 0; i < side / lattice.step; ++i) {
            for (int j = 0; j < side / lattice.step; ++j) {
                const int top = i * lattice.step + lattice.row;
                const int left = j * lattice.step + lattice.column + i % 2 * lattice.shift;
                addBlock(top, left, sums, weights);
            }
        }
        Plane result(side, side);
        for (std::size_t k = 0; k < pixels; ++k) {
            result.values()[k] = static_cast<float>(sums[k] / weights[k]);
        }
        return result;
    }

private:
    using Block = std::array<std::array<double, 8>, 8>;

    static Block basisVectors() {
        Block basis{};
        for (std::size_t u = 0; u < 8; ++u) {
            for (std::size_t x = 0; x < 8; ++x) {
                const double scale = u == 0 ? std::sqrt(0.125) : 0.5;
                basis[u][x] = scale * std::cos((2.0 * static_cast<double>(x) + 1.0) *
                                               static_cast<double>(u) * std::numbers::pi / 16.0);
            }
        }
        return basis;
    }

    static Block transposed(const Block& a) {
        Block result{};
        for (std::size_t k = 0; k < 64; ++k) {
            result[k / 8][k % 8] = a[k % 8][k / 8];
        }
        return result;
    }

    static Block product(const Block& a, const Block& b) {
        Block result{};
        for (std::size_t k = 0; k < 64; ++k) {
            for (std::size_t i = 0; i < 8; ++i) {
                result[k / 8][k % 8] += a[k / 8][i] * b[i][k % 8];
            }
        }
        return result;
    }

    Block transformed(const Plane& plane, int top, int left) const {
        Block block{};
        for (int k = 0; k < 64; ++k) {
            const float* row = plane.row((top + k / 8) % plane.width());
            block[static_cast<std::size_t>(k / 8)][static_cast<std::size_t>(k % 8)] =
                static_cast<double>(row[(left + k % 8) % plane.width()]);
        }
        return product(product(m_basis, block), transposed(m_basis));
    }

    /// Shrinks the block and returns the variance that remains.
    double shrink(Block& block) const {
        const double mean = block[0][0] / 8;
        const double factor =
            static_cast<double>(m_noise.base) + static_cast<double>(m_noise.slope) * mean;
        double remaining = 0.0;
        for (std::size_t k = 0; k < 64; ++k) {
            double& value = block[k / 8][k % 8];
            const double variance = factor * static_cast<double>(m_noise.variances[k]);
            if (k == 0 || std::abs(value) > m_threshold * std::sqrt(variance)) {
                remaining += variance;
            } else {
                value = 0.0;
            }
        }
        return remaining;
    }

    void addBlock(int top, int left, std::vector<double>& sums,
                  std::vector<double>& weights) const {
        Block block = transformed(m_noisy, top, left);
        const double weight = 1.0 / shrink(block);
        block = product(product(transposed(m_basis), block), m_basis);
        const int side = m_noisy.width();
        for (int k = 0; k < 64; ++k) {
            const auto at =
                static_cast<std::size_t>((top + k / 8) % side * side + (left + k % 8) % side);
            sums[at] +=
                weight * block[static_cast<std::size_t>(k / 8)][static_cast<std::size_t>(k % 8)];
            weights[at] += weight;
        }
    }

    const Block m_basis = basisVectors();
    const Plane& m_noisy;
    const DctNoise& m_noise;
    double m_threshold;
};

Plane filtered(const Plane& noisy, const DctNoise& noise, float threshold,
               const BlockLattice& lattice) {
    Plane out(noisy.width(), noisy.height());
    DctFilter().shrink(noisy, noise, threshold, lattice, out, Cancellation());
    return out;
}

TEST(DctFilter, IsThatOfTheFormula) {
    const Plane noisy = sum(circularScene(64), noisePlane(64, 0.03f, 1));
    for (const DctNoise& noise :
         {DctNoise{uneven(0.001f)}, DctNoise{uneven(0.001f), 0.05f, 2.5f}}) {
        for (const BlockLattice& lattice : kLattices) {
            const Plane expected = PlainFilter(noisy, noise, 2.5).run(lattice);
            EXPECT_LT(largestDifference(filtered(noisy, noise, 2.5f, lattice), expected), 2e-6);
        }
    }
}

TEST(DctFilter, ConstantPlanePasses) {
    Plane plane(64, 64);
    std::ranges::fill(plane.values(), 0.7f);
    for (const BlockLattice& lattice : kLattices) {
        EXPECT_LT(largestDifference(filtered(plane, even(1.0f), 3.0f, lattice), plane), 5e-7);
    }
}

TEST(DctFilter, WithoutNoiseEveryPlanePasses) {
    const Plane plane = noisePlane(128, 0.2f, 3);
    for (const BlockLattice& lattice : kLattices) {
        EXPECT_LT(largestDifference(filtered(plane, even(0.0f), 3.0f, lattice), plane), 2e-6);
    }
}

TEST(DctFilter, SlopePassesInside) {
    constexpr int kSide = 64;
    Plane plane(kSide, kSide);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            plane.row(y)[x] = 0.01f * static_cast<float>(x) + 0.005f * static_cast<float>(y);
        }
    }
    const Plane out = filtered(plane, even(1e-8f), 3.0f, kLattices[1]);
    for (int y = 8; y < kSide - 8; ++y) {
        for (int x = 8; x < kSide - 8; ++x) {
            ASSERT_NEAR(out.row(y)[x], plane.row(y)[x], 2e-4f);
        }
    }
}

TEST(DctFilter, RemovesMostOfTheNoise) {
    const Plane scene = circularScene(128);
    const Plane noisy = sum(scene, noisePlane(128, 0.05f, 4));
    const Plane clean = filtered(noisy, even(0.0025f), 2.7f, kLattices[1]);
    EXPECT_LT(distance(clean, scene), 0.55 * distance(noisy, scene));
}

TEST(DctFilter, MovedPlaneGivesTheMovedResult) {
    constexpr int kSide = 64;
    const Plane noisy = sum(circularScene(kSide), noisePlane(kSide, 0.03f, 5));
    Plane moved(kSide, kSide);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            moved.row((y + 5) % kSide)[(x + 60) % kSide] = noisy.row(y)[x];
        }
    }
    const Plane a = filtered(noisy, even(0.001f), 2.5f, {4, 0, 1, 0});
    const Plane b = filtered(moved, even(0.001f), 2.5f, {4, 1, 1, 0});
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            ASSERT_NEAR(b.row((y + 5) % kSide)[(x + 60) % kSide], a.row(y)[x], 2e-6f);
        }
    }
}

TEST(DctFilter, ResultMayReplaceItsSource) {
    const Plane noisy = sum(circularScene(64), noisePlane(64, 0.03f, 6));
    Plane plane = copyOf(noisy);
    DctFilter().shrink(plane, even(0.001f), 2.5f, kLattices[1], plane, Cancellation());
    EXPECT_EQ(largestDifference(plane, filtered(noisy, even(0.001f), 2.5f, kLattices[1])), 0.0);
}

TEST(DctFilter, NoiseMayGrowWithTheMeanOfABlock) {
    // Dark and bright stripes with the same texture: only in the dark it stands above the noise.
    Plane plane(64, 64);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            plane.row(y)[x] =
                (y < 32 ? 0.1f : 0.9f) + 0.02f * std::sin(1.3f * static_cast<float>(x));
        }
    }
    const Plane out = filtered(plane, {even(0.003f).variances, 0.0f, 1.0f}, 3.0f, kLattices[1]);
    const auto contrast = [&](int y) {
        const auto [least, most] = std::minmax_element(out.row(y) + 16, out.row(y) + 48);
        return *most - *least;
    };
    EXPECT_GT(contrast(16), 0.02f);
    EXPECT_LT(contrast(48), 0.01f);
}

TEST(DctFilter, AllVariantsGiveTheSameBits) {
    const Plane noisy = sum(circularScene(64), noisePlane(64, 0.03f, 7));
    for (const BlockLattice& lattice : kLattices) {
        std::optional<Plane> expected;
        vel::test::forEachTarget([&] {
            Plane found = filtered(noisy, {uneven(0.001f), 0.2f, 1.5f}, 2.5f, lattice);
            if (!expected) {
                expected = std::move(found);
                return;
            }
            EXPECT_TRUE(std::ranges::equal(found.values(), expected->values()));
        });
    }
}

TEST(DctFilter, NotANumberStaysInTheBlocksAroundIt) {
    Plane plane = circularScene(64);
    plane.row(30)[30] = std::numeric_limits<float>::quiet_NaN();
    plane.row(31)[30] = std::numeric_limits<float>::infinity();
    const Plane out = filtered(plane, even(0.001f), 2.5f, kLattices[1]);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            const bool isNear = std::abs(y - 30) < 16 && std::abs(x - 30) < 8;
            ASSERT_TRUE(isNear || std::isfinite(out.row(y)[x])) << y << ' ' << x;
        }
    }
}

TEST(DctFilter, CancelledCallFails) {
    Plane plane = circularScene(64);
    Cancellation cancellation;
    cancellation.request();
    EXPECT_THROW(DctFilter().shrink(plane, even(0.001f), 2.5f, kLattices[1], plane, cancellation),
                 Failure);
}

} // namespace
} // namespace restoration
