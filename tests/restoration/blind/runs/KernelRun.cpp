#include "restoration/blind/runs/KernelRun.h"

#include "tests/restoration/blind/drawnPictures.h"
#include "tests/restoration/blind/modelKernels.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>

namespace restoration {
namespace {

std::optional<SquareKernel> run(const Plane& picture, KernelBounds bounds,
                                const RunSettings& settings) {
    ProgressMeter progress;
    const Cancellation cancellation;
    return runSearch(picture, bounds, settings, progress, cancellation);
}

/// The largest difference from the model's kernel, in units of the model's largest weight.
double differenceFromModel(const WholeKernel& blur, std::uint32_t seed, int side,
                           const RunSettings& settings, const std::vector<int>& model) {
    const Plane picture = blurredPicture(DrawnScene(214, 180, seed), blur, 1, seed + 100);
    const auto kernel = run(picture, {side, side}, settings);
    if (!kernel || kernel->values.size() != model.size()) {
        return std::numeric_limits<double>::infinity();
    }
    double largest = 0.0;
    double difference = 0.0;
    for (std::size_t i = 0; i < model.size(); ++i) {
        const double expected = 1e-6 * model[i];
        largest = std::max(largest, expected);
        difference = std::max(difference, std::abs(kernel->values[i] - expected));
    }
    return difference / largest;
}

/// The model has no price of weights and begins with smaller kernels.
constexpr RunSettings kPlainRunOfModel{4e-3f, 5e-4f, 5, 0.05, 0.0, 0.0, 5.0};
constexpr RunSettings kStrongestRunOfModel{2e-2f, 5e-4f, 8, 0.08, 0.0, 0.0, 5.0};
constexpr RunSettings kStrongRunOfModel{1e-2f, 5e-4f, 8, 0.05, 0.0, 0.0, 5.0};

WholeKernel corner() {
    return pathKernel(15, {{-3, 3, 4}, {-3, -4, 4}, {4, -4, 4}});
}

TEST(KernelRun, FindsTheKernelsOfTheModel) {
    constexpr double kTolerance = 1e-3;
    EXPECT_LT(differenceFromModel(discOfRadius3(), 1, 15, kPlainRunOfModel, kDisc3OfModel),
              kTolerance);
    EXPECT_LT(differenceFromModel(line11(), 2, 17, kPlainRunOfModel, kLine11OfModel), kTolerance);
    EXPECT_LT(differenceFromModel(hook(), 3, 21, kStrongRunOfModel, kHookOfModel), kTolerance);
    EXPECT_LT(differenceFromModel(corner(), 4, 17, kStrongestRunOfModel, kCornerOfModel),
              kTolerance);
    EXPECT_LT(differenceFromModel(line11(), 5, 15, kStrongRunOfModel, kLineBOfModel), kTolerance);
}

TEST(KernelRun, PriceOfWeightsLeavesFewerOfThem) {
    const Plane picture = blurredPicture(DrawnScene(150, 140, 7), line11(), 0, 1);
    RunSettings sparse = kPlainRun;
    sparse.sparsity = 0.05;
    const auto free = run(picture, {21, 21}, kPlainRun);
    const auto few = run(picture, {21, 21}, sparse);
    ASSERT_TRUE(free && few);
    const auto isZero = [](double weight) { return weight == 0.0; };
    EXPECT_GT(std::ranges::count_if(few->values, isZero),
              std::ranges::count_if(free->values, isZero));
}

TEST(KernelRun, KernelStaysInsideBoundsThatAreNotSquare) {
    const Plane picture = blurredPicture(DrawnScene(150, 140, 7), line11(), 0, 1);
    const auto kernel = run(picture, {15, 7}, kPlainRun);
    ASSERT_TRUE(kernel);
    EXPECT_EQ(kernel->side, 15);
    for (int y = 0; y < 15; ++y) {
        for (int x = 0; x < 15; ++x) {
            if (std::abs(y - 7) > 3) {
                EXPECT_EQ(kernel->at(y, x), 0.0);
            }
        }
    }
}

TEST(KernelRun, FindsNothingInAConstantPicture) {
    Plane grey(100, 80);
    std::ranges::fill(grey.values(), 0.4f);
    EXPECT_FALSE(run(grey, {11, 11}, kPlainRun));
}

TEST(KernelRun, AdvancesByItsUnits) {
    const Plane picture = blurredPicture(DrawnScene(120, 100, 3), line11(), 0, 1);
    ProgressMeter progress;
    progress.beginPhase(1.0, runUnits(picture.width(), picture.height(), {11, 11}, kPlainRun));
    const Cancellation cancellation;
    runSearch(picture, {11, 11}, kPlainRun, progress, cancellation);
    EXPECT_EQ(progress.done(), 1.0);
}

TEST(KernelRun, EndsWhenCancelled) {
    const Plane picture = blurredPicture(DrawnScene(120, 100, 3), line11(), 0, 1);
    ProgressMeter progress;
    Cancellation cancellation;
    cancellation.request();
    EXPECT_THROW(runSearch(picture, {11, 11}, kPlainRun, progress, cancellation), Failure);
}

} // namespace
} // namespace restoration
