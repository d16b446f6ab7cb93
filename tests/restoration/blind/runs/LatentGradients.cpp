#include "restoration/blind/runs/LatentGradients.h"

#include "restoration/blind/runs/gradientRows.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace restoration {
namespace {

constexpr int kSide = 64;

SquareKernel identity() {
    SquareKernel kernel(1);
    kernel.at(0, 0) = 1.0;
    return kernel;
}

/// A bright box of 24 by 24 pixels with faint noise.
Plane boxWithNoise(float noise) {
    std::mt19937 generator(5);
    Plane plane(kSide, kSide);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const bool isInside = x >= 20 && x < 44 && y >= 20 && y < 44;
            const float random = static_cast<float>(generator()) / 4294967296.0f - 0.5f;
            plane.row(y)[x] = (isInside ? 0.8f : 0.2f) + noise * random;
        }
    }
    return plane;
}

TEST(GradientRows, KeepGradientsFromTheThresholdOn) {
    const std::array<float, 4> row{0.0f, 0.3f, 0.3f, 0.0f};
    const std::array<float, 4> below{0.0f, 0.3f, 0.7f, 0.1f};
    std::array<float, 4> right{};
    std::array<float, 4> down{};
    keptGradientRow(row.data(), below.data(), 4, 0.04f, right.data(), down.data());
    EXPECT_EQ(right, (std::array<float, 4>{0.3f, 0.0f, -0.3f, 0.0f}));
    EXPECT_EQ(down, (std::array<float, 4>{0.0f, 0.0f, 0.7f - 0.3f, 0.0f}));
}

TEST(GradientRows, DivergenceIsTheAdjointOfTheDifferences) {
    std::mt19937 generator(3);
    const auto random = [&] { return static_cast<float>(generator() % 1000U) / 1000.0f; };
    Plane x(19, 7);
    Plane right(19, 7);
    Plane down(19, 7);
    for (Plane* plane : {&x, &right, &down}) {
        for (float& value : plane->values()) {
            value = random();
        }
    }
    double differences = 0.0;
    double adjoint = 0.0;
    std::vector<float> gx(19);
    std::vector<float> gy(19);
    std::vector<float> divergence(19);
    for (int y = 0; y < 7; ++y) {
        keptGradientRow(x.row(y), x.row((y + 1) % 7), 19, 0.0f, gx.data(), gy.data());
        divergenceRow(right.row(y), down.row(y), down.row((y + 6) % 7), 19, divergence.data());
        for (int c = 0; c < 19; ++c) {
            const auto i = static_cast<std::size_t>(c);
            differences += static_cast<double>(gx[i] * right.row(y)[c] + gy[i] * down.row(y)[c]);
            adjoint += static_cast<double>(divergence[i] * x.row(y)[c]);
        }
    }
    EXPECT_NEAR(differences, adjoint, 1e-4);
}

TEST(LatentGradients, KeepEdgesAndDropNoise) {
    const Cancellation cancellation;
    SquareTransform transform(kSide, cancellation);
    LatentGradients gradients(transform, boxWithNoise(0.05f), kSide, kSide);
    const std::size_t kept = gradients.find(identity(), 1e-2f);
    EXPECT_EQ(kept, 95U); // four sides of 24 pixels, one of which has a step in both directions
    EXPECT_NEAR(gradients.right().row(30)[19], 0.6f, 0.03f);
    EXPECT_NEAR(gradients.right().row(30)[43], -0.6f, 0.03f);
    EXPECT_EQ(gradients.right().row(30)[30], 0.0f);
    EXPECT_NEAR(gradients.down().row(43)[30], -0.6f, 0.03f);
}

TEST(LatentGradients, SharpenWhatTheKernelBlurs) {
    SquareKernel kernel(5);
    for (int x = 0; x < 5; ++x) {
        kernel.at(2, x) = 0.2;
    }
    const Plane sharp = boxWithNoise(0.0f);
    Plane blurred(kSide, kSide);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            float sum = 0.0f;
            for (int d = -2; d <= 2; ++d) {
                sum += 0.2f * sharp.row(y)[(x + d + kSide) % kSide];
            }
            blurred.row(y)[x] = sum;
        }
    }
    const Cancellation cancellation;
    SquareTransform transform(kSide, cancellation);
    LatentGradients gradients(transform, std::move(blurred), kSide, kSide);
    gradients.find(kernel, 4e-3f);
    EXPECT_NEAR(gradients.right().row(30)[19], 0.6f, 0.05f);
    EXPECT_EQ(gradients.right().row(30)[17], 0.0f);
    EXPECT_EQ(gradients.right().row(30)[21], 0.0f);
}

TEST(LatentGradients, MarginAndSurroundingsAreCleared) {
    const Cancellation cancellation;
    SquareTransform transform(kSide, cancellation);
    LatentGradients gradients(transform, boxWithNoise(0.05f), 50, 40);
    gradients.find(identity(), 1e-9f);
    gradients.clearMargin(4);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const bool isInside = x >= 4 && x < 46 && y >= 4 && y < 36;
            const bool isKept =
                gradients.right().row(y)[x] != 0.0f || gradients.down().row(y)[x] != 0.0f;
            EXPECT_EQ(isKept, isInside);
        }
    }
}

} // namespace
} // namespace restoration
