#include "restoration/blind/runs/KernelSystem.h"
#include "restoration/blind/runs/KernelSolver.h"
#include "restoration/blind/runs/pyramid.h"

#include "tests/restoration/blind/drawnPictures.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

SquareKernel identity() {
    SquareKernel kernel(1);
    kernel.at(0, 0) = 1.0;
    return kernel;
}

/// A sharp scene and its cyclic blur, 64 by 64 pixels.
struct BlurredScene {
    Plane sharp{64, 64};
    Plane blurred{64, 64};

    explicit BlurredScene(const SquareKernel& kernel) {
        const DrawnScene scene(64, 64, 21);
        const Plane drawn = scene.plane();
        std::ranges::copy(drawn.values(), sharp.values().begin());
        const int radius = kernel.radius();
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x) {
                double sum = 0.0;
                for (int row = -radius; row <= radius; ++row) {
                    for (int column = -radius; column <= radius; ++column) {
                        sum += kernel.at(row + radius, column + radius) *
                               static_cast<double>(
                                   sharp.row((y - row + 64) % 64)[(x - column + 64) % 64]);
                    }
                }
                blurred.row(y)[x] = static_cast<float>(sum);
            }
        }
    }
};

Plane copyOf(const Plane& plane) {
    Plane copy(plane.width(), plane.height());
    std::ranges::copy(plane.values(), copy.values().begin());
    return copy;
}

/// The sum over the plane of gradient products, by definition.
double correlationAt(const Plane& right, const Plane& down, const Plane& otherRight,
                     const Plane& otherDown, int x, int y) {
    double sum = 0.0;
    for (int row = 0; row < 64; ++row) {
        for (int column = 0; column < 64; ++column) {
            const int r = (row + y + 64) % 64;
            const int c = (column + x + 64) % 64;
            sum += static_cast<double>(right.row(row)[column]) *
                       static_cast<double>(otherRight.row(r)[c]) +
                   static_cast<double>(down.row(row)[column]) *
                       static_cast<double>(otherDown.row(r)[c]);
        }
    }
    return sum;
}

TEST(KernelSystem, HoldsTheCorrelationsOfTheGradients) {
    const Cancellation cancellation;
    SquareTransform transform(64, cancellation);
    const BlurredScene scene(hook().scaled());
    LatentGradients gradients(transform, copyOf(scene.blurred), 64, 64);
    gradients.find(identity(), 1e-2f);
    const KernelSystem system = KernelSystems(transform).of(gradients, 3);

    Plane right(64, 64);
    Plane down(64, 64);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            right.row(y)[x] = scene.blurred.row(y)[(x + 1) % 64] - scene.blurred.row(y)[x];
            down.row(y)[x] = scene.blurred.row((y + 1) % 64)[x] - scene.blurred.row(y)[x];
        }
    }
    ASSERT_EQ(system.autocorrelation.size(), 13U * 13U);
    ASSERT_EQ(system.correlation.size(), 7U * 7U);
    const double tolerance = 1e-5 * system.energy();
    ASSERT_GT(tolerance, 0.0);
    for (int y = -6; y <= 6; ++y) {
        for (int x = -6; x <= 6; ++x) {
            EXPECT_NEAR(system.autocorrelation[static_cast<std::size_t>((y + 6) * 13 + x + 6)],
                        correlationAt(gradients.right(), gradients.down(), gradients.right(),
                                      gradients.down(), x, y),
                        tolerance);
        }
    }
    for (int y = -3; y <= 3; ++y) {
        for (int x = -3; x <= 3; ++x) {
            EXPECT_NEAR(system.correlation[static_cast<std::size_t>((y + 3) * 7 + x + 3)],
                        correlationAt(gradients.right(), gradients.down(), right, down, x, y),
                        tolerance);
        }
    }
}

/// The system that the true gradients of the scene give.
KernelSystem trueSystem(const SquareKernel& kernel, int radius) {
    const Cancellation cancellation;
    SquareTransform transform(64, cancellation);
    const BlurredScene scene(kernel);
    LatentGradients sharp(transform, copyOf(scene.sharp), 64, 64);
    sharp.find(identity(), 1e-9f);
    KernelSystem system = KernelSystems(transform).of(sharp, radius);
    LatentGradients blurred(transform, copyOf(scene.blurred), 64, 64);
    // The picture of `sharp` is sharp: only its autocorrelation is that of the problem.
    for (int y = -radius; y <= radius; ++y) {
        for (int x = -radius; x <= radius; ++x) {
            blurred.find(identity(), 1e-9f);
            system.correlation[static_cast<std::size_t>((y + radius) * (2 * radius + 1) + x +
                                                        radius)] =
                correlationAt(sharp.right(), sharp.down(), blurred.right(), blurred.down(), x, y);
        }
    }
    return system;
}

TEST(KernelSolver, FindsTheKernelOfTrueGradients) {
    const SquareKernel truth = hook().scaled();
    const KernelSystem system = trueSystem(truth, 7);
    const Cancellation cancellation;
    KernelSolver solver(7, cancellation);
    SquareKernel kernel(15);
    kernel.at(7, 7) = 1.0;
    for (int i = 0; i < 10; ++i) {
        solver.improve(system, {7, 7}, 0.0, kernel);
    }
    for (std::size_t i = 0; i < kernel.values.size(); ++i) {
        EXPECT_GE(kernel.values[i], 0.0);
        EXPECT_NEAR(kernel.values[i], truth.values[i], 0.25 * truth.largest());
    }
}

/// Compares a solution with the conditions of the minimum.
void expectMinimum(double sparsity) {
    const KernelSystem system = trueSystem(discOfRadius3().scaled(), 4);
    const Cancellation cancellation;
    KernelSolver solver(4, cancellation);
    SquareKernel kernel(9);
    kernel.at(4, 4) = 1.0;
    for (int i = 0; i < 40; ++i) {
        solver.improve(system, {4, 4}, sparsity, kernel);
    }
    // Half the gradient A k - b + 2e-3 A(0) k - 5e-3 A(0) Laplace(k) + p: zero where k is above
    // zero, not negative elsewhere.
    const double energy = system.energy();
    const double price = sparsity * *std::ranges::max_element(system.correlation);
    const auto at = [&](int row, int column) {
        return row < 0 || column < 0 || row > 8 || column > 8 ? 0.0 : kernel.at(row, column);
    };
    for (int row = 0; row < 9; ++row) {
        for (int column = 0; column < 9; ++column) {
            double gradient =
                price - system.correlation[static_cast<std::size_t>(row * 9 + column)];
            for (int y = 0; y < 9; ++y) {
                for (int x = 0; x < 9; ++x) {
                    gradient += system.autocorrelation[static_cast<std::size_t>((row - y + 8) * 17 +
                                                                                column - x + 8)] *
                                kernel.at(y, x);
                }
            }
            gradient += 2e-3 * energy * at(row, column);
            gradient += 5e-3 * energy *
                        (4.0 * at(row, column) - at(row - 1, column) - at(row + 1, column) -
                         at(row, column - 1) - at(row, column + 1));
            if (kernel.at(row, column) > 0.0) {
                EXPECT_NEAR(gradient, 0.0, 1e-4 * energy);
            } else {
                EXPECT_GT(gradient, -1e-4 * energy);
            }
        }
    }
}

TEST(KernelSolver, SolutionMinimisesTheQuadratic) {
    expectMinimum(0.0);
}

TEST(KernelSolver, SolutionMinimisesTheSumWithThePriceOfWeights) {
    expectMinimum(0.02);
}

TEST(KernelSolver, StaysInsideTheReach) {
    const KernelSystem system = trueSystem(discOfRadius3().scaled(), 4);
    const Cancellation cancellation;
    KernelSolver solver(4, cancellation);
    SquareKernel kernel(9);
    kernel.at(4, 4) = 1.0;
    solver.improve(system, {4, 1}, 0.0, kernel);
    EXPECT_GT(kernel.at(4, 7), 0.0);
    EXPECT_GT(kernel.at(5, 4), 0.0);
    EXPECT_EQ(kernel.at(6, 4), 0.0);
}

} // namespace
} // namespace restoration
