#include "restoration/blind/findKernel.h"

#include "drawnPictures.h"
#include "restoration/blind/squares/likeness.h"
#include "restoration/blind/squares/squareKernelOf.h"
#include "restoration/failures/Failure.h"
#include "tests/support/EachTarget.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

namespace restoration {
namespace {

FoundKernel found(const Plane& picture, const FindSettings& settings = {}, int threads = 2) {
    Team team(threads, {});
    return findKernel(picture, settings, team);
}

SquareKernel squareOf(const Kernel& kernel) {
    return squareKernelOf(kernel, kernel.largerSide());
}

SquareKernel turned(SquareKernel kernel) {
    std::ranges::reverse(kernel.values);
    return kernel;
}

Plane pictureWith(const WholeKernel& blur, std::uint32_t seed) {
    return blurredPicture(DrawnScene(320, 280, seed), blur, 1, seed + 1);
}

WholeKernel smallKernel(int side, std::vector<std::int64_t> weights) {
    WholeKernel kernel(side);
    kernel.weights = std::move(weights);
    return kernel;
}

VelornStatus statusFor(const Plane& picture) {
    try {
        found(picture);
        return VELORN_STATUS_OK;
    } catch (const Failure& failure) {
        return failure.status();
    }
}

TEST(FindKernel, FindsADisc) {
    const FoundKernel result = found(pictureWith(discOfRadius3(), 11));
    EXPECT_GT(likeness(squareOf(result.kernel), discOfRadius3().scaled()), 0.95);
    EXPECT_GE(result.confidence, 0.5f);
    EXPECT_EQ(result.kind.shape, KernelKind::Shape::Disc);
    EXPECT_NEAR(result.kind.extent, 3.0f, 0.3f);
    EXPECT_GT(result.kernel.trust.strongest, 1e6f);
}

TEST(FindKernel, FindsALine) {
    const FoundKernel result = found(pictureWith(line11(), 12));
    EXPECT_GT(likeness(squareOf(result.kernel), line11().scaled()), 0.9);
    EXPECT_GE(result.confidence, 0.5f);
    EXPECT_EQ(result.kind.shape, KernelKind::Shape::Motion);
    EXPECT_NEAR(result.kind.extent, 11.0f, 1.0f);
    EXPECT_NEAR(result.kind.angle, 22.0f, 3.0f);
}

TEST(FindKernel, FindsAHookInItsOrientation) {
    const FoundKernel result = found(pictureWith(hook(), 13));
    EXPECT_EQ(result.kind.shape, KernelKind::Shape::Free);
    const SquareKernel kernel = squareOf(result.kernel);
    EXPECT_GT(likeness(kernel, hook().scaled()), 0.9);
    EXPECT_LT(likeness(turned(kernel), hook().scaled()), 0.8);
}

/// Lamps of 60 times white in a dark scene, blurred by `blur` and clipped.
Plane nightPicture(const WholeKernel& blur, std::uint32_t seed) {
    Plane night = pictureWith(blur, seed);
    for (float& value : night.values()) {
        value *= 0.5f;
    }
    const float sum = static_cast<float>(blur.sum());
    const int radius = blur.side / 2;
    for (int lamp = 0; lamp < 16; ++lamp) {
        const int left = 30 + 60 * (lamp % 4);
        const int top = 30 + 55 * (lamp / 4);
        for (int y = 0; y < blur.side; ++y) {
            for (int x = 0; x < blur.side; ++x) {
                const auto i = static_cast<std::size_t>(y * blur.side + x);
                const float light = 60.0f * static_cast<float>(blur.weights[i]) / sum;
                // A lamp of 2 by 2 pixels.
                for (const int offset : {0, 1}) {
                    float* row = night.row(top + y + offset - radius) + left + x - radius;
                    row[0] += light;
                    row[1] += light;
                }
            }
        }
    }
    for (float& value : night.values()) {
        value = std::min(value, 1.0f);
    }
    return night;
}

TEST(FindKernel, IsNotMisledByBlownLamps) {
    for (const WholeKernel& blur : {discOfRadius3(), line11(), hook()}) {
        const FoundKernel result = found(nightPicture(blur, 11));
        EXPECT_GT(likeness(squareOf(result.kernel), blur.scaled()), 0.85);
    }
}

TEST(FindKernel, FindsAPointInASharpPicture) {
    for (const std::uint32_t seed : {41u, 42u, 43u}) {
        const FoundKernel result = found(pictureWith(smallKernel(1, {1}), seed));
        EXPECT_EQ(result.kernel.width, 1);
        EXPECT_EQ(result.kind.shape, KernelKind::Shape::None);
        EXPECT_EQ(result.kernel.height, 1);
        EXPECT_EQ(result.kernel.values, std::vector<float>{1.0f});
        EXPECT_LT(result.confidence, 0.5f);
    }
}

TEST(FindCandidates, BestComesFirstAndIsTheKernelFound) {
    const Plane picture = pictureWith(discOfRadius3(), 45);
    Team team(2, {});
    const std::vector<FoundKernel> candidates = findCandidates(picture, {}, team);
    const FoundKernel result = found(picture);
    ASSERT_GE(candidates.size(), 7u); // six runs and a disc
    EXPECT_EQ(candidates.front().kernel.values, result.kernel.values);
    EXPECT_EQ(candidates.front().confidence, result.confidence);
    EXPECT_EQ(candidates.front().score, result.score);
    for (std::size_t i = 2; i < candidates.size(); ++i) {
        EXPECT_GE(candidates[i].score, candidates[i - 1].score);
    }
}

TEST(FindCandidates, KernelsOfASharpPictureComeAfterThePoint) {
    Team team(2, {});
    const auto candidates = findCandidates(pictureWith(smallKernel(1, {1}), 41), {}, team);
    ASSERT_GE(candidates.size(), 4u);
    EXPECT_EQ(candidates.front().kind.shape, KernelKind::Shape::None);
    EXPECT_GT(candidates[1].kernel.largerSide(), 1);
    EXPECT_LT(candidates[1].confidence, 0.5f);
}

TEST(FindKernel, FindsSmallBlurs) {
    const WholeKernel square = smallKernel(3, {1, 1, 1, 1, 1, 1, 1, 1, 1});
    const WholeKernel level =
        smallKernel(5, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    for (const WholeKernel& blur : {square, level}) {
        const FoundKernel result = found(pictureWith(blur, 44));
        EXPECT_GT(likeness(squareOf(result.kernel), blur.scaled()), 0.9);
        EXPECT_GT(result.confidence, 0.45f);
    }
}

TEST(FindKernel, KernelIsCentredHasUnitSumAndNoNegativeWeights) {
    const Kernel kernel = found(pictureWith(hook(), 14)).kernel;
    EXPECT_LT(kernel.trust.strongest, Trust().strongest);
    EXPECT_EQ(kernel.width % 2, 1);
    EXPECT_EQ(kernel.height % 2, 1);
    double sum = 0.0;
    double right = 0.0;
    double down = 0.0;
    for (int y = 0; y < kernel.height; ++y) {
        for (int x = 0; x < kernel.width; ++x) {
            const auto weight = static_cast<double>(kernel.at(y, x));
            EXPECT_GE(weight, 0.0);
            sum += weight;
            right += weight * (x - kernel.width / 2);
            down += weight * (y - kernel.height / 2);
        }
    }
    EXPECT_NEAR(sum, 1.0, 1e-5);
    EXPECT_NEAR(right, 0.0, 0.6);
    EXPECT_NEAR(down, 0.0, 0.6);
}

/// Searches for small kernels in a small picture take little time.
constexpr FindSettings kSmallSearch{11, 11, 0};

TEST(FindKernel, IsTheSameForEveryNumberOfThreads) {
    const Plane picture = blurredPicture(DrawnScene(200, 160, 15), line11(), 1, 16);
    const FoundKernel one = found(picture, kSmallSearch, 1);
    for (const int threads : {2, 3}) {
        const FoundKernel other = found(picture, kSmallSearch, threads);
        EXPECT_EQ(other.kernel.values, one.kernel.values);
        EXPECT_EQ(other.agreement, one.agreement);
        EXPECT_EQ(other.misfit, one.misfit);
        EXPECT_EQ(other.confidence, one.confidence);
    }
}

TEST(FindKernel, IsTheSameOnEveryProcessorVariant) {
    const Plane picture = blurredPicture(DrawnScene(200, 160, 21), hook(), 1, 2);
    const FoundKernel first = found(picture, kSmallSearch);
    vel::test::forEachTarget([&] {
        const FoundKernel other = found(picture, kSmallSearch);
        EXPECT_EQ(other.kernel.values, first.kernel.values);
        EXPECT_EQ(other.agreement, first.agreement);
        EXPECT_EQ(other.misfit, first.misfit);
    });
}

TEST(FindKernel, KernelIsAtMostAsLargeAsAllowed) {
    const Plane picture = pictureWith(line11(), 16);
    const Kernel kernel = found(picture, {10, 3, 0}).kernel;
    EXPECT_LE(kernel.width, 9);
    EXPECT_EQ(kernel.height, 3);
}

TEST(FindKernel, LooksAtThePartWithEdges) {
    constexpr int kSide = 1200;
    Plane picture(kSide, kSide);
    std::ranges::fill(picture.values(), 0.5f);
    const Plane part = pictureWith(discOfRadius3(), 17);
    for (int y = 0; y < part.height(); ++y) {
        std::copy_n(part.row(y), part.width(), picture.row(y + 850) + 820);
    }
    const Kernel kernel = found(picture).kernel;
    EXPECT_GT(likeness(squareOf(kernel), discOfRadius3().scaled()), 0.9);
}

TEST(FindKernel, LooksAtTheRegion) {
    Plane picture = pictureWith(line11(), 22);
    const Plane part = blurredPicture(DrawnScene(200, 180, 23), hook(), 1, 24);
    constexpr int kLeft = 110;
    constexpr int kTop = 70;
    for (int y = 0; y < part.height(); ++y) {
        std::copy_n(part.row(y), part.width(), picture.row(y + kTop) + kLeft);
    }
    FindSettings settings;
    settings.region = {kLeft, kTop, part.width(), part.height()};
    const FoundKernel inRegion = found(picture, settings);
    const FoundKernel inPart = found(part);
    EXPECT_EQ(inRegion.kernel.values, inPart.kernel.values);
    EXPECT_EQ(inRegion.confidence, inPart.confidence);
}

TEST(FindKernel, RegionsEndAtTheRimOfThePicture) {
    const Plane picture = blurredPicture(DrawnScene(200, 160, 25), line11(), 1, 26);
    FindSettings larger = {11, 11, 0};
    larger.region = {-5, -7, 5000, 5000};
    EXPECT_EQ(found(picture, larger).kernel.values, found(picture, {11, 11, 0}).kernel.values);
    for (const Rect& region : {Rect{0, 0, 200, 31}, Rect{180, 0, 200, 100}, Rect{500, 0, 90, 90}}) {
        FindSettings settings;
        settings.region = region;
        EXPECT_THROW(found(picture, settings), Failure);
    }
}

/// Two scenes side by side, each blurred by its own kernel.
Plane twoParts(const WholeKernel& left, const WholeKernel& right) {
    constexpr int kSide = 540;
    Plane picture(2 * kSide, kSide);
    int x = 0;
    for (const WholeKernel& blur : {left, right}) {
        const Plane scene = blurredPicture(DrawnScene(560, 560, 51), blur, 1, 52);
        for (int y = 0; y < kSide; ++y) {
            std::copy_n(scene.row(y), kSide, picture.row(y) + x);
        }
        x += kSide;
    }
    return picture;
}

TEST(FindKernel, ReportsWhetherPartsAgree) {
    const FoundKernel alike = found(twoParts(line11(), line11()));
    EXPECT_EQ(alike.parts, 2);
    EXPECT_GT(alike.partAgreement, 0.9f);
    const FoundKernel different = found(twoParts(line11(), hook()));
    EXPECT_EQ(different.parts, 2);
    EXPECT_LT(different.partAgreement, 0.8f);
    const FoundKernel single = found(blurredPicture(DrawnScene(200, 160, 15), line11(), 1, 16));
    EXPECT_EQ(single.parts, 1);
    EXPECT_EQ(single.partAgreement, 1.0f);
}

TEST(FindKernel, LooksAtTheSharperPart) {
    const WholeKernel square = smallKernel(3, {1, 1, 1, 1, 1, 1, 1, 1, 1});
    for (const Plane& picture :
         {twoParts(discOfRadius3(), square), twoParts(square, discOfRadius3())}) {
        EXPECT_GT(likeness(squareOf(found(picture).kernel), square.scaled()), 0.85);
    }
}

TEST(FindKernel, RefusesPicturesWithoutEdges) {
    Plane grey(300, 200);
    std::ranges::fill(grey.values(), 0.3f);
    EXPECT_EQ(statusFor(grey), VELORN_STATUS_NO_KERNEL);
    EXPECT_EQ(statusFor(Plane(1, 1)), VELORN_STATUS_NO_KERNEL);
    EXPECT_EQ(statusFor(Plane(500, 31)), VELORN_STATUS_NO_KERNEL);
}

TEST(FindKernel, SurvivesValuesThatAreNotFinite) {
    Plane picture = pictureWith(line11(), 18);
    for (int i = 0; i < 40; ++i) {
        picture.row(5 * i)[7 * i] = std::numeric_limits<float>::quiet_NaN();
        picture.row(5 * i)[7 * i + 1] = std::numeric_limits<float>::infinity();
        picture.row(5 * i)[7 * i + 2] = -1e38f;
    }
    const FoundKernel result = found(picture);
    for (const float weight : result.kernel.values) {
        EXPECT_TRUE(std::isfinite(weight));
    }
    EXPECT_TRUE(std::isfinite(result.confidence));
    EXPECT_TRUE(std::isfinite(result.misfit));

    std::ranges::fill(picture.values(), std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(statusFor(picture), VELORN_STATUS_NO_KERNEL);
}

TEST(FindKernel, FindsKernelsInThinPictures) {
    const Plane picture = blurredPicture(DrawnScene(700, 54, 19), line11(), 1, 1);
    const FoundKernel result = found(picture);
    EXPECT_LE(result.kernel.largerSide(), 9);
}

TEST(FindKernel, ReportsRisingProgressAndEndsWhenCancelled) {
    struct Calls {
        double last = 0.0;
        bool hasFallen = false;
        double cancelFrom = 2.0;
    } calls;
    const auto report = [](double done, void* data) -> std::int32_t {
        auto& seen = *static_cast<Calls*>(data);
        seen.hasFallen = seen.hasFallen || done < seen.last;
        seen.last = done;
        return done < seen.cancelFrom;
    };
    const Plane picture = pictureWith(line11(), 20);
    {
        Team team(2, {report, &calls});
        findKernel(picture, {}, team);
        EXPECT_EQ(team.progress().done(), 1.0);
    }
    EXPECT_FALSE(calls.hasFallen);
    calls.cancelFrom = 0.0;
    Team team(2, {report, &calls});
    try {
        findKernel(picture, {}, team);
        ADD_FAILURE() << "not cancelled";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status(), VELORN_STATUS_CANCELLED);
    }
}

} // namespace
} // namespace restoration
