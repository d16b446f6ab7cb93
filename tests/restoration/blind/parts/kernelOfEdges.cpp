#include "restoration/blind/parts/kernelOfEdges.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace restoration {
namespace {

/// Edges with the variance `along` in the direction `angle` and `across` in the other.
EdgeSpectrum edgesWith(double along, double across, double angle) {
    EdgeSpectrum edges;
    for (std::size_t i = 0; i < edges.directions.size(); ++i) {
        const double turn = std::numbers::pi * static_cast<double>(i) / 8.0 - angle;
        edges.directions[i].variance =
            along * std::cos(turn) * std::cos(turn) + across * std::sin(turn) * std::sin(turn);
    }
    return edges;
}

struct Moments {
    double level = 0.0;
    double upright = 0.0;
    double mixed = 0.0;
};

Moments momentsOf(const SquareKernel& kernel) {
    Moments moments;
    for (int y = 0; y < kernel.side; ++y) {
        for (int x = 0; x < kernel.side; ++x) {
            const int right = x - kernel.radius();
            const int down = y - kernel.radius();
            moments.level += kernel.at(y, x) * right * right;
            moments.upright += kernel.at(y, x) * down * down;
            moments.mixed += kernel.at(y, x) * right * down;
        }
    }
    return moments;
}

/// What the Gaussian leaves to the softness of sharp pictures.
constexpr double kSharp = 0.2;

TEST(KernelOfEdges, HasTheVariancesOfTheEdges) {
    const SquareKernel kernel = kernelOfEdges(edgesWith(1.2, 0.7, 0.0));
    const Moments moments = momentsOf(kernel);
    EXPECT_NEAR(moments.level, 1.2 - kSharp, 0.03);
    EXPECT_NEAR(moments.upright, 0.7 - kSharp, 0.03);
    EXPECT_NEAR(moments.mixed, 0.0, 1e-9);
    EXPECT_NEAR(kernel.sum(), 1.0, 1e-12);
}

TEST(KernelOfEdges, TurnsWithTheEdges) {
    const Moments moments = momentsOf(kernelOfEdges(edgesWith(1.2, 0.7, std::numbers::pi / 4)));
    EXPECT_NEAR(moments.level, 0.95 - kSharp, 0.03);
    EXPECT_NEAR(moments.upright, 0.95 - kSharp, 0.03);
    EXPECT_NEAR(moments.mixed, 0.25, 0.03);
}

TEST(KernelOfEdges, IsALineWhereOneDirectionIsSharp) {
    const SquareKernel kernel = kernelOfEdges(edgesWith(0.9, 0.1, std::numbers::pi / 2));
    const Moments moments = momentsOf(kernel);
    EXPECT_NEAR(moments.upright, 0.7, 0.03);
    EXPECT_LT(moments.level, 0.01);
}

TEST(KernelOfEdges, IsAPointForSharpEdges) {
    const SquareKernel kernel = kernelOfEdges(edgesWith(0.1, -0.3, 1.0));
    EXPECT_GT(kernel.at(4, 4), 0.99);
}

} // namespace
} // namespace restoration
