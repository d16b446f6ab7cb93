#include "velimproclib/tiles/BlockProcP3.h"

#include "tests/support/Digest.h"
#include "tests/support/fadedRows.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "tests/support/textOf.h"
#include "tests/support/Threads.h"
#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/tiles/ColorTwistTile.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <span>
#include <vector>

namespace {

using vel::CBlockProcP3;
using vel::TilePlanes;
using vel::test::GuardedPlane;

struct Layout {
    int tile;
    int border;
    int overlap = 16;
    int taper = 0;
    int mode = 0;
};

template <class T>
constexpr int kType = sizeof(T) == 1 ? CV_8UC3 : CV_16UC3;
template <class T>
constexpr double kFullScale = sizeof(T) == 1 ? 256.0 : 32768.0;

template <class T>
cv::Mat matrixOver(GuardedPlane<T>& image) {
    cv::Mat matrix(image.height(), image.width() / 3, kType<T>, image.data());
    // The constructor rejects odd steps of 16-bit images.
    matrix.step[0] = static_cast<std::size_t>(image.step());
    matrix.updateContinuityFlag();
    return matrix;
}

/// Noise over the whole range of the element type.
template <class T>
cv::Mat noise(int width, int height, unsigned seed = 1) {
    std::mt19937 random(seed);
    cv::Mat image(height, width, kType<T>);
    for (int y = 0; y < height; ++y) {
        std::generate_n(image.ptr<T>(y), 3 * width, [&] { return static_cast<T>(random() >> 5); });
    }
    return image;
}

bool sameImage(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && cv::countNonZero(a.reshape(1) != b.reshape(1)) == 0;
}

void start(CBlockProcP3& walk, const cv::Mat& source, const cv::Mat& target, const Layout& layout) {
    walk.init(source, target, layout.tile, layout.tile, static_cast<std::uint8_t>(layout.mode),
              layout.overlap, layout.border, layout.taper);
}

/// Walks the image, running `stage(planes, number of the tile)` on each tile.
/// @return the number of tiles
template <class Stage>
int walkThrough(const cv::Mat& source, const cv::Mat& target, const Layout& layout, Stage&& stage) {
    CBlockProcP3 walk;
    start(walk, source, target, layout);
    int tiles = 0;
    for (TilePlanes* planes = walk.nextBlock(); planes != nullptr; planes = walk.nextBlock()) {
        stage(*planes, tiles++);
        walk.doneABlock();
    }
    return tiles;
}

int walkUntouched(const cv::Mat& source, const cv::Mat& target, const Layout& layout) {
    return walkThrough(source, target, layout, [](TilePlanes&, int) {});
}

/// The integer failure of `run`, or -1 when there is none.
template <class Run>
int failureOf(Run&& run) {
    try {
        run();
    } catch (int failure) {
        return failure;
    }
    return -1;
}

int walkTwistedAndBack(const cv::Mat& source, const cv::Mat& target, const Layout& layout) {
    return walkThrough(source, target, layout, [](TilePlanes& planes, int) {
        vel::rgbToLumaChroma(planes, 0);
        vel::lumaChromaToRgb(planes, 0);
    });
}

/// Changes a tile so that neighbouring tiles differ where they overlap, with values beyond 0..1.
void disturb(TilePlanes& planes, int tile) {
    for (std::size_t c = 0; c < planes.size(); ++c) {
        for (int y = 0; y < planes[c].rows; ++y) {
            float* row = planes[c].ptr<float>(y);
            for (int x = 0; x < planes[c].cols; ++x) {
                row[x] =
                    row[x] *
                        (0.8F + 0.07F * static_cast<float>((tile + 3 * static_cast<int>(c)) % 5)) +
                    0.001F * static_cast<float>((x * 7 + y * 3) % 11);
            }
        }
    }
}

template <class T>
class BlockProcP3 : public testing::Test {};

using ElementTypes = testing::Types<std::uint8_t, std::uint16_t>;
TYPED_TEST_SUITE(BlockProcP3, ElementTypes);

TYPED_TEST(BlockProcP3, StitchedTilesThatDisagreeHaveTheSameBitsOnEveryPlatform) {
    vel::test::Digest digest;
    int tiles = 0;
    for (const Layout& layout : {Layout{40, 4}, Layout{40, 11}, Layout{70, 2}, Layout{64, 5, 5}}) {
        for (const auto& [width, height] :
             {std::pair{1, 1}, {17, 90}, {33, 31}, {101, 60}, {200, 130}, {67, 67}}) {
            const cv::Mat source = noise<TypeParam>(width, height);
            cv::Mat target(source.size(), source.type(), cv::Scalar::all(77));
            tiles += walkThrough(source, target, layout, disturb);
            digest.add(std::span<const TypeParam>(target.ptr<TypeParam>(), 3 * target.total()));
        }
    }
    EXPECT_EQ(tiles, 4009);
    EXPECT_EQ(digest.text(), sizeof(TypeParam) == 1 ? "64DB5FF66F0F7683" : "945077ABBA449C9A");
}

TYPED_TEST(BlockProcP3, UntouchedTilesReproduceTheImage) {
    std::mt19937 random(3);
    for (int size = 1; size < 70; ++size) {
        const int width = size;
        const int height = 1 + static_cast<int>(random() % 80);
        const cv::Mat source = noise<TypeParam>(width, height, static_cast<unsigned>(size));
        for (const Layout& layout :
             {Layout{29, 3}, Layout{40, 4, 16, 1}, Layout{64, 20, 7, 1}, Layout{36, 0}}) {
            cv::Mat target(source.size(), source.type(), cv::Scalar::all(1));
            walkUntouched(source, target, layout);
            ASSERT_TRUE(sameImage(target, source))
                << width << " by " << height << ", tile " << layout.tile;
        }
    }
}

TYPED_TEST(BlockProcP3, UntouchedTilesOfTheDriversSidesReproduceTheImage) {
    for (const Layout& layout : {Layout{256, 18, 16, 1}, Layout{256, 46, 16, 1},
                                 Layout{512, 106, 16, 1}, Layout{1024, 18, 16, 1}}) {
        for (const auto& [width, height] : {std::pair{1, 1}, {255, 300}, {1031, 401}}) {
            const cv::Mat source = noise<TypeParam>(width, height);
            cv::Mat target(source.size(), source.type(), cv::Scalar::all(1));
            walkUntouched(source, target, layout);
            ASSERT_TRUE(sameImage(target, source)) << width << ", tile " << layout.tile;
        }
    }
}

TYPED_TEST(BlockProcP3, AlignedLayoutReproducesTheImageToo) {
    for (const int size : {5, 50, 100, 333}) {
        const cv::Mat source = noise<TypeParam>(size, size / 2 + 1);
        cv::Mat target(source.size(), source.type());
        walkUntouched(source, target, Layout{64, 6, 8, 1, 1});
        EXPECT_TRUE(sameImage(target, source)) << size;
    }
}

TYPED_TEST(BlockProcP3, SupportsOddStepsAndUnalignedRowsAndWritesNothingElse) {
    for (const int extra : {0, 1, 4, 13}) {
        for (const int misalign : {0, 1, 3}) {
            GuardedPlane<TypeParam> source(3 * 83, 71, extra, misalign);
            GuardedPlane<TypeParam> target(3 * 83, 71, extra + 2, misalign);
            std::mt19937 random(5);
            source.fill([&] { return random() >> 7; });
            walkUntouched(matrixOver(source), matrixOver(target), Layout{40, 5, 16, 1});
            EXPECT_TRUE(source.sameBits(target));
            EXPECT_TRUE(source.intact());
            EXPECT_TRUE(target.intact());
        }
    }
}

TYPED_TEST(BlockProcP3, ResultDoesNotDependOnTheNumberOfThreads) {
    const cv::Mat source = noise<TypeParam>(301, 207);
    const Layout layout{176, 20, 16, 1};
    cv::Mat expected(source.size(), source.type(), cv::Scalar::all(9));
    walkThrough(source, expected, layout, disturb);
    vel::test::forThreadCounts([&] {
        cv::Mat target(source.size(), source.type(), cv::Scalar::all(9));
        walkThrough(source, target, layout, disturb);
        EXPECT_TRUE(sameImage(target, expected));
    });
}

TYPED_TEST(BlockProcP3, PlanesHoldTheTileWithItsMarginReplicatedAtTheImagesEdges) {
    const cv::Mat source = noise<TypeParam>(23, 9);
    cv::Mat target(source.size(), source.type());
    CBlockProcP3 walk;
    start(walk, source, target, Layout{64, 8});
    const TilePlanes* planes = walk.nextBlock();
    ASSERT_NE(planes, nullptr);
    for (int c = 0; c < 3; ++c) {
        const cv::Mat& plane = (*planes)[static_cast<std::size_t>(c)];
        ASSERT_EQ(plane.size(), cv::Size(64, 64));
        for (int y = 0; y < 64; ++y) {
            const TypeParam* row = source.ptr<TypeParam>(std::clamp(y - 8, 0, 8));
            for (int x = 0; x < 64; ++x) {
                const double expected =
                    row[3 * std::clamp(x - 8, 0, 22) + c] / kFullScale<TypeParam>;
                ASSERT_EQ(static_cast<double>(plane.at<float>(y, x)), expected);
            }
        }
    }
    EXPECT_EQ(walk.tilesAcross(), 1);
    EXPECT_EQ(walk.tilesDown(), 1);
}

TYPED_TEST(BlockProcP3, TaperLeavesTheUsefulPartOfALoadedTileAsItIs) {
    const cv::Mat source = noise<TypeParam>(150, 150);
    cv::Mat target(source.size(), source.type());
    CBlockProcP3 plain;
    CBlockProcP3 periodic;
    start(plain, source, target, Layout{96, 16, 16, 0});
    start(periodic, source, target, Layout{96, 16, 16, 1});
    const TilePlanes& loaded = *plain.nextBlock();
    const TilePlanes& tapered = *periodic.nextBlock();
    const cv::Rect useful(16, 16, 64, 64);
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_EQ(cv::countNonZero(loaded[c](useful) != tapered[c](useful)), 0);
        EXPECT_GT(cv::countNonZero(loaded[c] != tapered[c]), 3000);
    }
}

TYPED_TEST(BlockProcP3, StoringSaturatesValuesThatNoPixelCanHold) {
    const float infinity = std::numeric_limits<float>::infinity();
    constexpr TypeParam kMost = std::numeric_limits<TypeParam>::max();
    for (const auto& [value, expected] :
         {std::pair<float, TypeParam>{infinity, kMost},
          {-infinity, TypeParam{0}},
          {1e30F, kMost},
          {-0.5F, TypeParam{0}},
          {std::numeric_limits<float>::quiet_NaN(), TypeParam{0}}}) {
        const cv::Mat source = noise<TypeParam>(20, 20);
        cv::Mat target(source.size(), source.type(), cv::Scalar::all(3));
        walkThrough(source, target, Layout{64, 8}, [value = value](TilePlanes& planes, int) {
            for (cv::Mat& plane : planes) {
                plane.setTo(cv::Scalar(static_cast<double>(value)));
            }
        });
        EXPECT_EQ(target.ptr<TypeParam>(7)[19], expected) << value;
    }
}

TEST(BlockProcP3Depths, EightBitImageTwistedAndTwistedBackComesBackIdentical) {
    for (const auto& [width, height] : {std::pair{1, 1}, {60, 33}, {131, 97}, {400, 300}}) {
        const cv::Mat source = noise<std::uint8_t>(width, height);
        cv::Mat target(source.size(), source.type());
        walkTwistedAndBack(source, target, Layout{64, 10, 16, 1});
        EXPECT_TRUE(sameImage(target, source)) << width;
    }
}

TEST(BlockProcP3Depths, SixteenBitImageTwistedAndTwistedBackStaysWithinAFewLevels) {
    cv::Mat source = noise<std::uint16_t>(131, 97);
    source = cv::min(source, cv::Scalar::all(32768));
    cv::Mat target(source.size(), source.type());
    walkTwistedAndBack(source, target, Layout{64, 10, 16, 1});
    EXPECT_LE(cv::norm(source, target, cv::NORM_INF), 2.0);
}

TEST(BlockProcP3Depths, SixteenBitValuesAboveWhiteSurvive) {
    cv::Mat source(40, 40, CV_16UC3, cv::Scalar(65535, 32769, 32768));
    cv::Mat target(source.size(), source.type());
    walkThrough(source, target, Layout{40, 5, 16, 1}, [](TilePlanes& planes, int) {
        EXPECT_FLOAT_EQ(planes[0].at<float>(20, 20), 65535.0F / 32768.0F);
        EXPECT_EQ(planes[2].at<float>(20, 20), 1.0F);
    });
    EXPECT_TRUE(sameImage(target, source));
}

TEST(BlockProcP3Depths, EightBitWhiteIsBelowOne) {
    cv::Mat source(4, 4, CV_8UC3, cv::Scalar(255, 128, 0));
    cv::Mat target(source.size(), source.type());
    walkThrough(source, target, Layout{32, 5}, [](TilePlanes& planes, int) {
        EXPECT_EQ(planes[0].at<float>(6, 6), 255.0F / 256.0F);
        EXPECT_EQ(planes[1].at<float>(6, 6), 0.5F);
        EXPECT_EQ(planes[2].at<float>(6, 6), 0.0F);
    });
}

TEST(BlockProcP3Blends, ColumnsAreRoundedToNearestAfterTheFade) {
    // Two tiles of 30 on 44 pixels share 16: black first, then a grey of 100.
    const auto paint = [](TilePlanes& planes, int tile) {
        for (cv::Mat& plane : planes) {
            plane.setTo(cv::Scalar(tile == 0 ? 0.0 : 100.0 / 256.0));
        }
    };
    cv::Mat image(4, 44, CV_8UC3);
    ASSERT_EQ(walkThrough(image, image, Layout{30, 0}, paint), 2);
    for (int i = 0; i < 44; ++i) {
        const double share = std::clamp((i - 13) / 17.0, 0.0, 1.0);
        EXPECT_EQ(image.ptr(2)[3 * i + 1], std::lround(100 * share)) << i;
    }
}

TEST(BlockProcP3Blends, RowsOfTilesAreRoundedToSingleAndTruncated) {
    // Tiles of 30 on 93 rows share 8, 8 and 11 rows.
    cv::Mat image(93, 4, CV_8UC3);
    const auto paint = [](TilePlanes& planes, int tile) {
        for (cv::Mat& plane : planes) {
            plane.setTo(tile % 2 == 0 ? 9.0 / 256.0 : 0.0);
        }
    };
    ASSERT_EQ(walkThrough(image, image, Layout{30, 0, 8}, paint), 4);
    // 9 * (1 - 1/9), where the weight is a little above 1/9, rounds to 8.
    EXPECT_EQ(image.ptr(22)[0], 8);
    const std::vector<int> expected =
        vel::test::fadedRows({{0, 9}, {22, 0}, {44, 9}, {63, 0}}, 30, [](std::int64_t exact) {
            return static_cast<int>(std::ldexp(static_cast<float>(exact), -32));
        });
    for (int y = 0; y < image.rows; ++y) {
        for (int i = 0; i < 3 * image.cols; ++i) {
            EXPECT_EQ(image.ptr(y)[i], expected[static_cast<std::size_t>(y)]) << y;
        }
    }
}

TEST(BlockProcP3Blends, RowsOfTilesThatOnlyTouchAreCopied) {
    // Without an overlap the step is the length of a tile: two tiles of 30 on 60 rows.
    cv::Mat image(60, 4, CV_8UC3);
    const int tiles = walkThrough(image, image, Layout{30, 0, 0}, [](TilePlanes& planes, int tile) {
        for (cv::Mat& plane : planes) {
            plane.setTo(cv::Scalar(tile == 0 ? 0.25 : 0.5));
        }
    });
    ASSERT_EQ(tiles, 2);
    EXPECT_EQ(image.ptr(29)[0], 64);
    EXPECT_EQ(image.ptr(30)[0], 128);
}

TEST(BlockProcP3Failures, GapBetweenTilesOfARowIsRefused) {
    const cv::Mat source = noise<std::uint8_t>(100, 10);
    cv::Mat target(source.size(), source.type());
    EXPECT_EQ(failureOf([&] {
                  walkUntouched(source, target, Layout{20, 0, -8});
              }),
              vel::kColumnGap);
}

TEST(BlockProcP3Failures, GapBetweenRowsOfTilesIsRefused) {
    const cv::Mat source = noise<std::uint8_t>(10, 100);
    cv::Mat target(source.size(), source.type());
    EXPECT_EQ(failureOf([&] { walkUntouched(source, target, Layout{20, 0, -8}); }), 0);
}

TEST(BlockProcP3Failures, ImageWithoutColumnsOrRowsIsRefused) {
    for (const cv::Size size : {cv::Size(0, 5), {5, 0}, {0, 0}}) {
        const cv::Mat image(size, CV_8UC3);
        EXPECT_EQ(failureOf([&] {
                      walkUntouched(image, image, Layout{64, 8, 16, 1});
                  }),
                  vel::kNoPixels);
    }
}

TEST(BlockProcP3Failures, MarginWiderThanTheTileLeavesNoSource) {
    const cv::Mat source = noise<std::uint8_t>(50, 50);
    cv::Mat target(source.size(), source.type());
    for (const int border : {64, 65, 1000, 1000000000, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(failureOf([&] {
                      walkUntouched(source, target, Layout{64, border, 16, 1});
                  }),
                  102);
    }
}

TEST(BlockProcP3Failures, NegativeUsefulTileIsProcessedOnceStoresNothingAndEndsTheWalk) {
    const cv::Mat source = noise<std::uint8_t>(50, 50);
    for (const int border : {33, 40, 50, 63}) {
        cv::Mat target(source.size(), source.type(), cv::Scalar::all(5));
        const cv::Mat before = target.clone();
        int tiles = 0;
        EXPECT_EQ(failureOf([&] {
                      walkThrough(source, target, Layout{64, border, 16, 1},
                                  [&](TilePlanes& planes, int) {
                                      EXPECT_EQ(planes[0].size(), cv::Size(64, 64));
                                      ++tiles;
                                  });
                  }),
                  101);
        EXPECT_EQ(tiles, 1);
        EXPECT_TRUE(sameImage(target, before));
    }
}

TEST(BlockProcP3Failures, UsefulTileNoLongerThanTheOverlapIsRefused) {
    for (int useful = 0; useful <= 16; useful += 2) {
        const cv::Mat source = noise<std::uint8_t>(2 * useful + 1, 40);
        cv::Mat target(source.size(), source.type());
        EXPECT_EQ(failureOf([&] {
                      walkUntouched(source, target, Layout{64, (64 - useful) / 2, 16, 1});
                  }),
                  101)
            << useful;
    }
}

TEST(BlockProcP3Failures, EveryMarginEitherReproducesTheImageOrIsRefused) {
    for (int border = 0; border < 80; ++border) {
        for (const auto& [width, height] : {std::pair{1, 1}, {9, 3}, {20, 64}, {70, 41}}) {
            GuardedPlane<std::uint8_t> source(3 * width, height);
            GuardedPlane<std::uint8_t> target(3 * width, height);
            std::mt19937 random(11);
            source.fill([&] { return random() >> 7; });
            const int failure = failureOf([&] {
                walkUntouched(matrixOver(source), matrixOver(target), Layout{64, border, 16, 1});
            });
            const int useful = 64 - 2 * border;
            ASSERT_TRUE(failure == -1 ||
                        failure == (border < 64 ? vel::kColumnGap : vel::kNoPixels))
                << border;
            if (useful > 16) {
                ASSERT_EQ(failure, -1);
            }
            if (failure == -1) {
                ASSERT_TRUE(source.sameBits(target)) << border;
            }
            ASSERT_TRUE(target.intact());
        }
    }
}

TEST(BlockProcP3Failures, ImagesOfUnsupportedOrDifferentTypesAndSizesAreRefusedByText) {
    const auto textOf = [](const cv::Mat& source, const cv::Mat& target, int border) {
        return vel::test::textOf([&] { walkUntouched(source, target, Layout{64, border}); });
    };
    const cv::Mat image = noise<std::uint8_t>(5, 5);
    EXPECT_EQ(textOf(image, noise<std::uint8_t>(5, 6), 8),
              "CBlockProcP3::init - source and target are not of the same type and size");
    EXPECT_EQ(textOf(image, noise<std::uint16_t>(5, 5), 8),
              "CBlockProcP3::init - source and target are not of the same type and size");
    const cv::Mat grey(5, 5, CV_8UC1);
    EXPECT_EQ(textOf(grey, grey, 8),
              "CBlockProcP3::init - source.type() != CV_8UC3 && source.type() != CV_16UC3");
    EXPECT_EQ(textOf(image, image, -1), "CBlockProcP3::init - border < 0");
}

TEST(BlockProcP3Failures, TileBeyondMemoryIsAnExceptionOfTheMatrixLibrary) {
    const cv::Mat image = noise<std::uint8_t>(5, 5);
    EXPECT_THROW(walkUntouched(image, image, Layout{1 << 29, 8}), cv::Exception);
}

TEST(BlockProcP3, ObjectCanBeSetUpAgain) {
    CBlockProcP3 walk;
    for (const int size : {90, 30, 61}) {
        const cv::Mat source = noise<std::uint8_t>(size, size);
        cv::Mat target(source.size(), source.type());
        start(walk, source, target, Layout{40, 4, 16, 1});
        while (walk.nextBlock() != nullptr) {
            walk.doneABlock();
        }
        EXPECT_TRUE(sameImage(target, source));
    }
}

TEST(BlockProcP3, UnstoredFirstTileIsHandedOutAgain) {
    const cv::Mat source = noise<std::uint8_t>(90, 20);
    cv::Mat target(source.size(), source.type());
    CBlockProcP3 walk;
    start(walk, source, target, Layout{40, 4});
    const cv::Mat first = (*walk.nextBlock())[0].clone();
    EXPECT_EQ(cv::countNonZero((*walk.nextBlock())[0] != first), 0);
}

} // namespace
