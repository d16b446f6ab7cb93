#include "velimproclib/veldeblurcv/estimation/solver/solvePositiveDefinite.h"

#include "tests/support/EachTarget.h"
#include "tests/support/sameBits.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

using vel::solvePositiveDefinite;
using vel::test::sameBits;

using Doubles = cv::Mat_<double>;

struct System {
    Doubles matrix;
    Doubles rightHand;
};

/// A Gram matrix of random integers plus `diagonal`: the sums are exact.
System randomSystem(int n, double diagonal, std::mt19937& random) {
    const auto level = [&] { return static_cast<double>(random() % 201) - 100.0; };
    Doubles factors(n + 5, n);
    for (double& value : factors) {
        value = level();
    }
    System system{Doubles(n, n, 0.0), Doubles(n, 1)};
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            for (int k = 0; k < factors.rows; ++k) {
                system.matrix(i, j) += factors(k, i) * factors(k, j);
            }
        }
        system.matrix(i, i) += diagonal;
        system.rightHand(i) = level();
    }
    return system;
}

/// Cholesky's method element by element, in the order that is documented.
Doubles plainSolution(const System& system) {
    const int n = system.matrix.rows;
    Doubles factor = system.matrix.clone();
    Doubles x = system.rightHand.clone();
    std::vector<double> reciprocals;
    for (int i = 0; i < n; ++i) {
        for (int j = i; j < n; ++j) {
            for (int k = 0; k < i; ++k) {
                factor(i, j) -= factor(k, i) * factor(k, j);
            }
        }
        reciprocals.push_back(1.0 / std::sqrt(factor(i, i)));
        for (int j = i; j < n; ++j) {
            factor(i, j) *= reciprocals.back();
        }
        for (int k = 0; k < i; ++k) {
            x(i) -= factor(k, i) * x(k);
        }
        x(i) *= reciprocals.back();
    }
    for (int i = n - 1; i >= 0; --i) {
        for (int k = n - 1; k > i; --k) {
            x(i) -= factor(i, k) * x(k);
        }
        x(i) *= reciprocals[static_cast<std::size_t>(i)];
    }
    return x;
}

TEST(SolvePositiveDefinite, EqualsThePlainLoopsOnEveryProcessorVariant) {
    std::mt19937 random(91);
    for (const int n : {1, 2, 3, 15, 16, 17, 31, 32, 33, 63, 64, 65, 81, 99, 121, 160}) {
        const System system = randomSystem(n, 0.25, random);
        const Doubles expected = plainSolution(system);
        vel::test::forEachTarget([&] {
            cv::Mat x(n, 1, CV_64FC1);
            ASSERT_TRUE(solvePositiveDefinite(system.matrix, system.rightHand, x));
            EXPECT_TRUE(sameBits(x, expected)) << n;
        });
    }
}

TEST(SolvePositiveDefinite, SolutionSatisfiesTheEquations) {
    std::mt19937 random(92);
    const System system = randomSystem(200, 100.0, random);
    cv::Mat x(200, 1, CV_64FC1);
    ASSERT_TRUE(solvePositiveDefinite(system.matrix, system.rightHand, x));
    const cv::Mat residual = system.matrix * x - system.rightHand;
    EXPECT_LE(cv::norm(residual, cv::NORM_INF), 1e-8);
}

TEST(SolvePositiveDefinite, OnlyTheUpperHalfCounts) {
    std::mt19937 random(93);
    const System system = randomSystem(37, 1.0, random);
    Doubles upper = system.matrix.clone();
    for (int row = 0; row < 37; ++row) {
        for (int column = 0; column < row; ++column) {
            upper(row, column) = std::numeric_limits<double>::quiet_NaN();
        }
    }
    cv::Mat x(37, 1, CV_64FC1);
    ASSERT_TRUE(solvePositiveDefinite(upper, system.rightHand, x));
    EXPECT_TRUE(sameBits(x, plainSolution(system)));
}

TEST(SolvePositiveDefinite, PivotThatIsNotPositiveIsAFailure) {
    for (const double pivot : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        for (const int place : {0, 16, 39}) {
            System system{Doubles(cv::Mat::eye(40, 40, CV_64FC1)), Doubles(40, 1, 1.0)};
            system.matrix(place, place) = pivot;
            cv::Mat x(40, 1, CV_64FC1);
            EXPECT_FALSE(solvePositiveDefinite(system.matrix, system.rightHand, x)) << place;
        }
    }
}

} // namespace
