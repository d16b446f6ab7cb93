#include "velimproclib/veldeblurcv/detail/SmootherRows.h"

#include "tests/support/EachTarget.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace vel {
namespace {

constexpr double kCanary = -777.0;

/// Random values at an unaligned address, between two canaries.
class Row {
public:
    Row(std::size_t count, std::mt19937& random, double low, double high)
        : m_values(count + 2, kCanary) {
        std::uniform_real_distribution<double> value(low, high);
        for (std::size_t i = 0; i < count; ++i) {
            m_values[i + 1] = value(random);
        }
    }
    double* data() { return m_values.data() + 1; }
    const double* data() const { return m_values.data() + 1; }
    double& operator[](std::size_t i) { return m_values[i + 1]; }
    double operator[](std::size_t i) const { return m_values[i + 1]; }
    bool intact() const { return m_values.front() == kCanary && m_values.back() == kCanary; }
    bool operator==(const Row& other) const {
        return std::memcmp(m_values.data(), other.m_values.data(),
                           m_values.size() * sizeof(double)) == 0;
    }

private:
    std::vector<double> m_values;
};

std::vector<std::size_t> counts() {
    std::vector<std::size_t> all;
    for (std::size_t count = 1; count <= 67; ++count) {
        all.push_back(count);
    }
    all.push_back(1024);
    return all;
}

/// Adds column c to lane c mod 8, and the lanes in pairs.
class EightLanes {
public:
    void add(std::size_t column, double term) { m_lanes[column % 8] += term; }
    double sum() const {
        return ((m_lanes[0] + m_lanes[1]) + (m_lanes[2] + m_lanes[3])) +
               ((m_lanes[4] + m_lanes[5]) + (m_lanes[6] + m_lanes[7]));
    }

private:
    double m_lanes[8] = {};
};

double plainPower(double base, int exponent) {
    double result = 1.0;
    for (auto rest = std::abs(static_cast<long long>(exponent)); rest != 0; rest /= 2) {
        if (rest % 2 != 0) {
            result *= base;
        }
        base *= base;
    }
    return exponent < 0 ? 1.0 / result : result;
}

TEST(SmootherRows, CouplingsFollowTheStepsOfTheGuideOnEveryVariant) {
    std::mt19937 random(1);
    test::forEachTarget([&] {
        for (const int exponent : {0, 1, 2, 3, 5, 10, -1, -2, -7}) {
            for (const std::size_t count : counts()) {
                const Row a(count, random, -2.0, 0.0);
                const Row b(count, random, -2.0, 0.0);
                Row coupling(count, random, 0.0, 1.0);
                couplingRow({0.05, 1e-4, exponent}, a.data(), b.data(), coupling.data(), count);
                for (std::size_t c = 0; c < count; ++c) {
                    const double step = plainPower(std::abs(b[c] - a[c]), exponent);
                    ASSERT_EQ(coupling[c], -0.05 / (step + 1e-4)) << exponent << ' ' << c;
                }
                EXPECT_TRUE(coupling.intact());
            }
        }
    });
}

TEST(SmootherRows, TheLargestExponentsGiveDefinedCouplings) {
    const double a[3] = {0.0, 0.0, 0.0};
    const double b[3] = {0.0, 0.5, 1.0};
    double coupling[3];
    couplingRow({0.05, 0.25, std::numeric_limits<std::int32_t>::max()}, a, b, coupling, 3);
    EXPECT_EQ(coupling[0], -0.05 / 0.25);
    EXPECT_EQ(coupling[1], -0.05 / 0.25);
    EXPECT_EQ(coupling[2], -0.05 / 1.25);
    couplingRow({0.05, 0.25, std::numeric_limits<std::int32_t>::min()}, a, b, coupling, 3);
    EXPECT_EQ(coupling[0], 0.0);
    EXPECT_EQ(coupling[1], 0.0);
    EXPECT_EQ(coupling[2], -0.05 / 1.25);
}

struct Couplings {
    Couplings(std::size_t count, std::mt19937& random)
        : right(count, random, -500.0, 0.0), below(count, random, -500.0, 0.0),
          above(count, random, -500.0, 0.0) {
        right[count - 1] = 0.0;
    }
    CouplingRows rows() const { return {right.data(), below.data(), above.data()}; }

    Row right;
    Row below;
    Row above;
};

TEST(SmootherRows, TheDiagonalIsOneMinusAllCouplings) {
    std::mt19937 random(2);
    test::forEachTarget([&] {
        for (const std::size_t count : counts()) {
            const Couplings w(count, random);
            Row diagonal(count, random, 0.0, 1.0);
            diagonalRow(w.rows(), diagonal.data(), count);
            for (std::size_t c = 0; c < count; ++c) {
                const double left = c > 0 ? w.right[c - 1] : 0.0;
                ASSERT_EQ(diagonal[c], 1.0 - w.right[c] - w.below[c] - left - w.above[c]);
            }
            EXPECT_TRUE(diagonal.intact());
        }
    });
}

TEST(SmootherRows, ProductAndSumHaveTheSameBitsOnEveryVariant) {
    std::mt19937 random(3);
    test::forEachTarget([&] {
        for (const std::size_t count : counts()) {
            const Couplings w(count, random);
            const Row above(count, random, -1.0, 1.0);
            const Row here(count, random, -1.0, 1.0);
            const Row below(count, random, -1.0, 1.0);
            Row product(count, random, 0.0, 1.0);
            const double sum = productRow(w.rows(), {above.data(), here.data(), below.data()},
                                          product.data(), count);
            EightLanes expected;
            for (std::size_t c = 0; c < count; ++c) {
                const double p = here[c];
                const double right = c + 1 < count ? w.right[c] * (here[c + 1] - p) : 0.0;
                const double left = c > 0 ? w.right[c - 1] * (here[c - 1] - p) : 0.0;
                const double down = w.below[c] * (below[c] - p);
                const double up = w.above[c] * (above[c] - p);
                ASSERT_EQ(product[c], p + ((right + left) + (down + up))) << count << ' ' << c;
                expected.add(c, p * product[c]);
            }
            ASSERT_EQ(sum, expected.sum()) << count;
            EXPECT_TRUE(product.intact());
        }
    });
}

TEST(SmootherRows, TheProductOfAConstantIsExactlyTheConstant) {
    std::mt19937 random(4);
    const Couplings w(67, random);
    const Row constant(67, random, 0.3, 0.3);
    Row product(67, random, 0.0, 1.0);
    productRow(w.rows(), {constant.data(), constant.data(), constant.data()}, product.data(), 67);
    EXPECT_TRUE(product == constant);
}

TEST(SmootherRows, TheStartIsTheScaledDifferenceWithItsSums) {
    std::mt19937 random(5);
    test::forEachTarget([&] {
        for (const std::size_t count : counts()) {
            const Row product(count, random, -1.0, 1.0);
            const Row diagonal(count, random, 1.0, 2000.0);
            const Row rhs(count, random, 0.0, 1.0);
            Row residual = rhs;
            Row direction(count, random, 0.0, 1.0);
            const ResidualSums sums =
                startRow(product.data(), diagonal.data(), residual.data(), direction.data(), count);
            EightLanes scaled;
            EightLanes square;
            for (std::size_t c = 0; c < count; ++c) {
                ASSERT_EQ(residual[c], (rhs[c] - product[c]) / diagonal[c]);
                const double unscaled = diagonal[c] * residual[c];
                scaled.add(c, unscaled * residual[c]);
                square.add(c, unscaled * unscaled);
            }
            EXPECT_TRUE(direction == residual);
            EXPECT_TRUE(residual.intact());
            ASSERT_EQ(sums.scaled, scaled.sum());
            ASSERT_EQ(sums.square, square.sum());
        }
    });
}

TEST(SmootherRows, TheScaledProductIsSubtractedFromTheResidual) {
    std::mt19937 random(6);
    test::forEachTarget([&] {
        for (const std::size_t count : counts()) {
            const Row product(count, random, -1.0, 1.0);
            const Row diagonal(count, random, 1.0, 2000.0);
            const Row before(count, random, -1.0, 1.0);
            Row residual = before;
            const ResidualSums sums =
                residualRow(0.7, product.data(), diagonal.data(), residual.data(), count);
            EightLanes scaled;
            EightLanes square;
            for (std::size_t c = 0; c < count; ++c) {
                ASSERT_EQ(residual[c], before[c] - 0.7 * (product[c] / diagonal[c]));
                const double unscaled = diagonal[c] * residual[c];
                scaled.add(c, unscaled * residual[c]);
                square.add(c, unscaled * unscaled);
            }
            EXPECT_TRUE(residual.intact());
            ASSERT_EQ(sums.scaled, scaled.sum());
            ASSERT_EQ(sums.square, square.sum());
        }
    });
}

TEST(SmootherRows, AdvanceMovesTheSolutionBeforeItChangesTheDirection) {
    std::mt19937 random(7);
    test::forEachTarget([&] {
        for (const std::size_t count : counts()) {
            const Row residual(count, random, -1.0, 1.0);
            const Row solutionBefore(count, random, 0.0, 1.0);
            const Row directionBefore(count, random, -1.0, 1.0);
            Row solution = solutionBefore;
            Row direction = directionBefore;
            advanceRow(0.7, 0.3, residual.data(), solution.data(), direction.data(), count);
            for (std::size_t c = 0; c < count; ++c) {
                ASSERT_EQ(solution[c], solutionBefore[c] + 0.7 * directionBefore[c]);
                ASSERT_EQ(direction[c], residual[c] + 0.3 * directionBefore[c]);
            }
            EXPECT_TRUE(solution.intact() && direction.intact());
        }
    });
}

} // namespace
} // namespace vel
