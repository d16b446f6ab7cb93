#include "velimproclib/tiles/BlockProcP1.h"

#include "tests/support/Digest.h"
#include "tests/support/fadedRows.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "tests/support/sameBits.h"
#include "tests/support/textOf.h"
#include "tests/support/Threads.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace {

using vel::CBlockProcP1;
using vel::test::GuardedPlane;
using vel::test::sameBits;
using vel::test::textOf;

struct Layout {
    int width;
    int height;
    int border;
    int overlap = 8;
    int taper = 0;
    bool align16 = false;
};

template <class T>
constexpr int kType = sizeof(T) == 1 ? CV_8UC1 : CV_16SC1;
template <class T>
constexpr float kToUnit = sizeof(T) == 1 ? 0.003921569f : 3.051851e-05f;
/// Noise over the whole range of the element type.
template <class T>
cv::Mat noise(int width, int height, unsigned seed = 1) {
    std::mt19937 random(seed);
    cv::Mat image(height, width, kType<T>);
    std::generate(image.begin<T>(), image.end<T>(), [&] { return static_cast<T>(random() >> 5); });
    return image;
}

void start(CBlockProcP1& walk, const cv::Mat& in, const cv::Mat& out, const Layout& layout) {
    EXPECT_EQ(walk.init(in, out, layout.width, layout.height, layout.align16, layout.overlap,
                        layout.border, layout.taper),
              1);
}

/// Walks the image, running `work(block, number of the block)` on each block.
/// @return the number of blocks
template <class Work>
int walkThrough(const cv::Mat& in, const cv::Mat& out, const Layout& layout, Work&& work) {
    CBlockProcP1 walk;
    start(walk, in, out, layout);
    int blocks = 0;
    for (cv::Mat* block = walk.nextBlock(); block != nullptr; block = walk.nextBlock()) {
        work(*block, blocks++);
        walk.doneABlock();
    }
    return blocks;
}

int walkUntouched(const cv::Mat& in, const cv::Mat& out, const Layout& layout) {
    return walkThrough(in, out, layout, [](cv::Mat&, int) {});
}

cv::Mat firstBlock(const cv::Mat& in, const Layout& layout) {
    CBlockProcP1 walk;
    start(walk, in, cv::Mat(), layout);
    return walk.nextBlock()->clone();
}

/// Changes a block so that neighbours differ where they overlap, with values beyond the pixels'
/// range.
void disturb(cv::Mat& block, int number) {
    for (int y = 0; y < block.rows; ++y) {
        for (int x = 0; x < block.cols; ++x) {
            float& value = block.at<float>(y, x);
            value = value * (0.8f + 0.07f * static_cast<float>(number % 5)) +
                    0.001f * static_cast<float>((x * 7 + y * 3) % 11);
        }
    }
}

template <class T>
class BlockProcP1 : public testing::Test {};

using ElementTypes = testing::Types<std::uint8_t, std::int16_t>;
TYPED_TEST_SUITE(BlockProcP1, ElementTypes);

TYPED_TEST(BlockProcP1, StitchedBlocksThatDisagreeHaveTheSameBitsOnEveryPlatform) {
    vel::test::Digest digest;
    int blocks = 0;
    for (const Layout& layout :
         {Layout{40, 40, 4}, Layout{40, 40, 11}, Layout{70, 50, 2}, Layout{33, 64, 5, 5}}) {
        for (const auto& [width, height] :
             {std::pair{1, 1}, {17, 90}, {33, 31}, {101, 60}, {200, 130}, {67, 67}}) {
            const cv::Mat in = noise<TypeParam>(width, height);
            cv::Mat out(in.size(), in.type(), cv::Scalar::all(77));
            blocks += walkThrough(in, out, layout, disturb);
            digest.add(std::span<const TypeParam>(out.ptr<TypeParam>(), out.total()));
        }
    }
    EXPECT_EQ(blocks, 530);
    EXPECT_EQ(digest.text(), sizeof(TypeParam) == 1 ? "B119F50E61E3951F" : "DB29EEF22A345552");
}

TYPED_TEST(BlockProcP1, UntouchedBlocksReproduceTheImage) {
    std::mt19937 random(3);
    for (int width = 1; width < 80; ++width) {
        const int height = 1 + static_cast<int>(random() % 80);
        const cv::Mat in = noise<TypeParam>(width, height, static_cast<unsigned>(width));
        for (const Layout& layout : {Layout{29, 31, 3}, Layout{40, 40, 4, 8, 1},
                                     Layout{64, 61, 20, 7, 1}, Layout{36, 28, 0, 16}}) {
            cv::Mat out(in.size(), in.type(), cv::Scalar::all(1));
            walkUntouched(in, out, layout);
            ASSERT_TRUE(sameBits(out, in)) << width << " by " << height;
        }
    }
}

TYPED_TEST(BlockProcP1, UntouchedBlocksOfTheEstimatorsSidesReproduceTheImage) {
    for (const auto& [side, width, height] :
         {std::array{256, 1, 1}, {256, 256, 200}, {512, 257, 300}, {512, 1030, 30}}) {
        const cv::Mat in = noise<TypeParam>(width, height);
        cv::Mat out(in.size(), in.type(), cv::Scalar::all(1));
        walkUntouched(in, out, Layout{side, side, 16, 8, 1});
        EXPECT_TRUE(sameBits(out, in)) << width << " by " << height;
    }
}

TYPED_TEST(BlockProcP1, AlignedLayoutReproducesTheImageToo) {
    for (const int size : {5, 50, 100, 333}) {
        const cv::Mat in = noise<TypeParam>(size, size / 2 + 1);
        cv::Mat out(in.size(), in.type());
        walkUntouched(in, out, Layout{64, 64, 6, 8, 1, true});
        EXPECT_TRUE(sameBits(out, in)) << size;
    }
}

TYPED_TEST(BlockProcP1, AlignedLayoutMayHandOutLargerBlocks) {
    const cv::Mat in = noise<TypeParam>(60, 50);
    CBlockProcP1 walk;
    start(walk, in, cv::Mat(), Layout{64, 64, 6, 8, 1, true});
    // One block of the next multiple of 16 above the image's length, and its margins.
    EXPECT_EQ(walk.nextBlock()->size(), cv::Size(64 + 12, 64 + 12));
}

TYPED_TEST(BlockProcP1, WithEmptyOutputTheWalkHandsOutTheSameBlocksAndWritesNothing) {
    const cv::Mat in = noise<TypeParam>(130, 75);
    const Layout layout{40, 40, 5, 8, 1};
    std::vector<cv::Mat> blocks;
    cv::Mat out(in.size(), in.type());
    walkThrough(in, out, layout, [&](cv::Mat& block, int) { blocks.push_back(block.clone()); });
    const cv::Mat before = in.clone();
    const int count = walkThrough(in, cv::Mat(), layout, [&](cv::Mat& block, int number) {
        EXPECT_TRUE(sameBits(block, blocks[static_cast<std::size_t>(number)]));
        block.setTo(7);
    });
    EXPECT_EQ(static_cast<std::size_t>(count), blocks.size());
    EXPECT_TRUE(sameBits(in, before));
}

TYPED_TEST(BlockProcP1, WorksOnViewsOfLargerImagesAndWritesNothingElse) {
    constexpr int kElement = sizeof(TypeParam);
    for (const int extra : {0, 1, 5, 13}) {
        GuardedPlane<TypeParam> in(83, 71, extra * kElement, kElement);
        GuardedPlane<TypeParam> out(83, 71, (extra + 2) * kElement, 3 * kElement);
        std::mt19937 random(5);
        in.fill([&] { return random() >> 7; });
        const auto matrixOver = [](GuardedPlane<TypeParam>& plane) {
            return cv::Mat(plane.height(), plane.width(), kType<TypeParam>, plane.data(),
                           static_cast<std::size_t>(plane.step()));
        };
        walkUntouched(matrixOver(in), matrixOver(out), Layout{40, 40, 5, 8, 1});
        EXPECT_TRUE(in.sameBits(out));
        EXPECT_TRUE(in.intact());
        EXPECT_TRUE(out.intact());
    }
}

TYPED_TEST(BlockProcP1, ResultDoesNotDependOnTheNumberOfThreads) {
    // Overlaps large enough for a team.
    const cv::Mat in = noise<TypeParam>(401, 390);
    const Layout layout{300, 300, 20, 90, 1};
    cv::Mat expected(in.size(), in.type(), cv::Scalar::all(9));
    walkThrough(in, expected, layout, disturb);
    vel::test::forThreadCounts([&] {
        cv::Mat out(in.size(), in.type(), cv::Scalar::all(9));
        walkThrough(in, out, layout, disturb);
        EXPECT_TRUE(sameBits(out, expected));
    });
}

/// Compares the first block with `in`, whose edges are replicated around it.
template <class T>
void expectFirstBlockOf(const cv::Mat& in, const Layout& layout) {
    CBlockProcP1 walk;
    start(walk, in, cv::Mat(), layout);
    const cv::Mat& block = *walk.nextBlock();
    ASSERT_EQ(block.size(), cv::Size(layout.width, layout.height));
    ASSERT_EQ(block.type(), CV_32FC1);
    for (int y = 0; y < layout.height; ++y) {
        const T* row = in.ptr<T>(std::clamp(y - layout.border, 0, in.rows - 1));
        for (int x = 0; x < layout.width; ++x) {
            const T pixel = row[std::clamp(x - layout.border, 0, in.cols - 1)];
            ASSERT_EQ(block.at<float>(y, x), static_cast<float>(pixel) * kToUnit<T>);
        }
    }
    EXPECT_EQ(walk.blocksAcross(), 1);
    EXPECT_EQ(walk.blocksDown(), 1);
}

TYPED_TEST(BlockProcP1, ImageSmallerThanABlockIsReplicatedUpToItsFullSize) {
    expectFirstBlockOf<TypeParam>(noise<TypeParam>(23, 9), {64, 60, 8});
    expectFirstBlockOf<TypeParam>(noise<TypeParam>(1, 1), {64, 60, 8});
}

TYPED_TEST(BlockProcP1, ImageOfExactlyTheUsefulSizeIsOneBlockWithReplicatedMargins) {
    expectFirstBlockOf<TypeParam>(noise<TypeParam>(64 - 16, 60 - 16), {64, 60, 8});
}

TYPED_TEST(BlockProcP1, MarginInsideTheImageIsTheNeighbouringPixels) {
    const cv::Mat in = noise<TypeParam>(100, 20);
    std::vector<cv::Mat> blocks;
    walkThrough(in, cv::Mat(), Layout{40, 40, 6},
                [&](cv::Mat& block, int) { blocks.push_back(block.clone()); });
    // Useful parts start at 0, 19, 38, 57 and, pulled back, at 72.
    ASSERT_EQ(blocks.size(), 5u);
    EXPECT_EQ(blocks[1].at<float>(6, 0),
              static_cast<float>(in.at<TypeParam>(0, 19 - 6)) * kToUnit<TypeParam>);
    EXPECT_EQ(blocks[4].at<float>(6, 6),
              static_cast<float>(in.at<TypeParam>(0, 72)) * kToUnit<TypeParam>);
    EXPECT_EQ(blocks[4].at<float>(6, 39),
              static_cast<float>(in.at<TypeParam>(0, 99)) * kToUnit<TypeParam>);
}

TYPED_TEST(BlockProcP1, TaperLeavesTheUsefulPartOfALoadedBlockAsItIs) {
    const cv::Mat in = noise<TypeParam>(150, 150);
    const cv::Mat loaded = firstBlock(in, Layout{96, 96, 16, 8, 0});
    const cv::Mat tapered = firstBlock(in, Layout{96, 96, 16, 8, 1});
    const cv::Rect useful(16, 16, 64, 64);
    EXPECT_TRUE(sameBits(loaded(useful), tapered(useful)));
    EXPECT_GT(cv::countNonZero(loaded != tapered), 3000);
}

TYPED_TEST(BlockProcP1, OnlyOneSwitchesTheTaperOn) {
    const cv::Mat in = noise<TypeParam>(150, 150);
    const cv::Mat loaded = firstBlock(in, Layout{96, 96, 16, 8, 0});
    for (const int taper : {-1, 2, 255}) {
        EXPECT_TRUE(sameBits(firstBlock(in, Layout{96, 96, 16, 8, taper}), loaded)) << taper;
    }
}

TYPED_TEST(BlockProcP1, StoringSaturatesValuesThatNoPixelCanHold) {
    using Limits = std::numeric_limits<TypeParam>;
    const float infinity = std::numeric_limits<float>::infinity();
    for (const auto& [value, expected] :
         {std::pair<float, TypeParam>{infinity, Limits::max()},
          {-infinity, Limits::min()},
          {1e30f, Limits::max()},
          {-1e30f, Limits::min()},
          {std::numeric_limits<float>::quiet_NaN(), TypeParam{0}}}) {
        const cv::Mat in = noise<TypeParam>(20, 20);
        cv::Mat out(in.size(), in.type(), cv::Scalar::all(3));
        walkThrough(in, out, Layout{64, 64, 8}, [value = value](cv::Mat& block, int) {
            block.setTo(cv::Scalar(static_cast<double>(value)));
        });
        EXPECT_EQ(out.at<TypeParam>(7, 19), expected) << value;
    }
}

TEST(BlockProcP1Blends, LastBlockIsPulledBackAndFadesInOverItsWholeOverlap) {
    // 1000 columns, useful blocks of 224, step 195: a fifth block at 780 would end at 1004 and
    // therefore starts at 776. Its neighbour ends at 585 + 224 = 809.
    const cv::Mat in(3, 1000, CV_8UC1, cv::Scalar(0));
    cv::Mat out(in.size(), in.type());
    CBlockProcP1 walk;
    start(walk, in, out, Layout{256, 256, 16, 8, 1});
    EXPECT_EQ(walk.blocksAcross(), 5);
    EXPECT_EQ(walk.blocksDown(), 1);
    int blocks = 0;
    for (cv::Mat* block = walk.nextBlock(); block != nullptr; block = walk.nextBlock()) {
        block->setTo(++blocks < 5 ? 0.0 : 200.0 / 255.0);
        walk.doneABlock();
    }
    EXPECT_EQ(blocks, 5);
    EXPECT_EQ(out.at<std::uint8_t>(1, 775), 0);
    for (int x = 776; x < 809; ++x) {
        EXPECT_EQ(out.at<std::uint8_t>(1, x), std::lround(200.0 * (x - 775) / 34.0)) << x;
    }
    EXPECT_EQ(out.at<std::uint8_t>(1, 809), 200);
    EXPECT_EQ(out.at<std::uint8_t>(1, 999), 200);
}

TEST(BlockProcP1Blends, ColumnsAreRoundedToNearestAfterTheFade) {
    // Two blocks of 30 on 44 pixels share 16: black first, then 100.
    const auto paint = [](cv::Mat& block, int number) {
        block.setTo(number == 0 ? 0.0 : 100.0 / 255.0);
    };
    cv::Mat image(4, 44, CV_8UC1);
    ASSERT_EQ(walkThrough(image, image, Layout{30, 30, 0, 16}, paint), 2);
    for (int i = 0; i < 44; ++i) {
        const double share = std::clamp((i - 13) / 17.0, 0.0, 1.0);
        EXPECT_EQ(image.at<std::uint8_t>(2, i), std::lround(100 * share)) << i;
    }
}

TEST(BlockProcP1Blends, RowsOfBlocksAreTruncatedWithoutARoundingToSingle) {
    // Blocks of 30 on 93 rows share 8, 8 and 11 rows.
    cv::Mat image(93, 4, CV_8UC1);
    const auto paint = [](cv::Mat& block, int number) {
        block.setTo(number % 2 == 0 ? 9.0 / 255.0 : 0.0);
    };
    ASSERT_EQ(walkThrough(image, image, Layout{30, 30, 0}, paint), 4);
    // 9 * (1 - 1/9), where the weight is a little above 1/9.
    EXPECT_EQ(image.at<std::uint8_t>(22, 0), 7);
    const std::vector<int> expected =
        vel::test::fadedRows({{0, 9}, {22, 0}, {44, 9}, {63, 0}}, 30,
                             [](std::int64_t exact) { return static_cast<int>(exact >> 32); });
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            EXPECT_EQ(image.at<std::uint8_t>(y, x), expected[static_cast<std::size_t>(y)]) << y;
        }
    }
}

TEST(BlockProcP1Blends, RowsOfBlocksThatOnlyTouchAreCopied) {
    // Without an overlap the step is the length of a block: two blocks of 30 on 60 rows.
    cv::Mat image(60, 4, CV_16SC1);
    const auto paint = [](cv::Mat& block, int number) { block.setTo(number == 0 ? 0.25 : -0.5); };
    ASSERT_EQ(walkThrough(image, image, Layout{30, 30, 0, 0}, paint), 2);
    EXPECT_EQ(image.at<std::int16_t>(29, 0), 8192);
    EXPECT_EQ(image.at<std::int16_t>(30, 0), -16384);
}

TEST(BlockProcP1Blends, FirstBlocksOfRowsAndTheFirstRowOfBlocksAreNotBlended) {
    // Two by two blocks of 30 on 44 by 44 pixels share 16. Outside of the overlaps each pixel comes
    // from one block, whatever the output and the strip held before.
    cv::Mat image(44, 44, CV_8UC1, cv::Scalar(200));
    const auto paint = [](cv::Mat& block, int number) { block.setTo((number + 1) * 20.0 / 255.0); };
    ASSERT_EQ(walkThrough(image.clone(), image, Layout{30, 30, 0, 16}, paint), 4);
    const auto isAll = [&](cv::Rect part, int level) {
        return cv::countNonZero(image(part) != level) == 0;
    };
    EXPECT_TRUE(isAll({0, 0, 14, 14}, 20));
    EXPECT_TRUE(isAll({30, 0, 14, 14}, 40));
    EXPECT_TRUE(isAll({0, 30, 14, 14}, 60));
    EXPECT_TRUE(isAll({30, 30, 14, 14}, 80));
}

TEST(BlockProcP1Failures, OtherImageTypesAreRefused) {
    for (const int type : {CV_8UC3, CV_16UC1, CV_32FC1, CV_8SC1}) {
        const cv::Mat image(5, 5, type);
        EXPECT_EQ(textOf([&] {
                      walkUntouched(image, image, Layout{64, 64, 8});
                  }),
                  "CBlockProcP1::init - m_in.type() != CV_8UC1 && m_in.type() != CV_16SC1");
    }
}

TEST(BlockProcP1Failures, OutputOfAnotherSizeOrTypeIsRefused) {
    const cv::Mat in = noise<std::uint8_t>(5, 5);
    EXPECT_EQ(textOf([&] {
                  walkUntouched(in, noise<std::uint8_t>(5, 6), Layout{64, 64, 8});
              }),
              "CBlockProcP1::init - in and out is not the same size and out is not empty");
    EXPECT_EQ(
        textOf([&] {
            walkUntouched(cv::Mat(5, 5, CV_32FC1), noise<std::uint8_t>(5, 6), Layout{64, 64, 8});
        }),
        "CBlockProcP1::init - m_in.type() != CV_8UC1 && m_in.type() != CV_16SC1");
    EXPECT_EQ(textOf([&] {
                  walkUntouched(in, noise<std::int16_t>(5, 5), Layout{64, 64, 8});
              }),
              "CBlockProcP1::init - in and out are not of the same type");
    EXPECT_EQ(textOf([&] {
                  walkUntouched(in, in, Layout{64, 64, -1});
              }),
              "CBlockProcP1::init - border < 0");
}

TEST(BlockProcP1Failures, BlockWithoutImagePixelsIsRefused) {
    constexpr auto kText = "CBlockProcP1::convertBlkDupBorder - roiSize < 1";
    for (const cv::Size size : {cv::Size(0, 5), {5, 0}, {0, 0}}) {
        const cv::Mat image(size, CV_8UC1);
        EXPECT_EQ(textOf([&] { walkUntouched(image, image, Layout{64, 64, 8, 8, 1}); }), kText);
    }
    const cv::Mat in = noise<std::uint8_t>(50, 50);
    for (const int border : {64, 65, 1000, 1000000000, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(textOf([&] {
                      walkUntouched(in, cv::Mat(), Layout{64, 64, border, 8, 1});
                  }),
                  kText);
    }
}

TEST(BlockProcP1Failures, MarginsOfAnotherImageTypeAreRefused) {
    for (const int type : {CV_8UC1, CV_32FC3, CV_64FC1}) {
        cv::Mat image(5, 5, type);
        EXPECT_EQ(textOf([&] { CBlockProcP1::imageExtendBorder(image, 1, 1, 1, 1); }),
                  "CBlockProcP1::imageExtendBorder - inOut.type()!=CV_32FC1");
    }
    cv::Mat image = (cv::Mat_<float>(3, 3) << 0, 0, 0, 0, 5, 0, 0, 0, 0);
    EXPECT_EQ(CBlockProcP1::imageExtendBorder(image, 1, 1, 1, 1), 1);
    EXPECT_EQ(cv::countNonZero(image != 5.0), 0);
}

TEST(BlockProcP1Failures, GapsBetweenBlocksAreRefused) {
    const cv::Mat wide = noise<std::uint8_t>(100, 10);
    const cv::Mat high = noise<std::uint8_t>(10, 100);
    const Layout gaps{20, 20, 0, -8};
    EXPECT_EQ(textOf([&] { walkUntouched(wide, wide.clone(), gaps); }),
              "CBlockProcP1::doneABlock - ovlpX < 0");
    EXPECT_EQ(textOf([&] { walkUntouched(wide, cv::Mat(), gaps); }),
              "CBlockProcP1::doneABlock - ovlpX < 0");
    EXPECT_EQ(textOf([&] { walkUntouched(high, high.clone(), gaps); }),
              "CBlockProcP1::doneABlock - ovlpY < 0");
}

TEST(BlockProcP1Failures, EveryMarginEitherReproducesTheImageOrIsRefused) {
    for (int border = 0; border < 80; ++border) {
        for (const auto& [width, height] : {std::pair{1, 1}, {9, 3}, {20, 64}, {70, 41}}) {
            const cv::Mat in = noise<std::uint8_t>(width, height);
            cv::Mat out(in.size(), in.type());
            const std::string text = textOf([&] {
                walkUntouched(in, out, Layout{64, 64, border, 8, 1});
            });
            if (border < 28) {
                ASSERT_EQ(text, "") << border;
            }
            if (text.empty()) {
                ASSERT_TRUE(sameBits(in, out)) << border;
            } else {
                ASSERT_EQ(text, border < 64 ? "CBlockProcP1::advance - step < 1"
                                            : "CBlockProcP1::convertBlkDupBorder - roiSize < 1");
            }
        }
    }
}

TEST(BlockProcP1Failures, BlockBeyondMemoryIsAnExceptionOfTheMatrixLibrary) {
    const cv::Mat image = noise<std::uint8_t>(5, 5);
    EXPECT_THROW(walkUntouched(image, image, Layout{1 << 29, 1 << 29, 8}), cv::Exception);
}

TEST(BlockProcP1, ObjectCanBeSetUpAgain) {
    CBlockProcP1 walk;
    for (const int size : {90, 30, 61}) {
        const cv::Mat in = noise<std::uint8_t>(size, size);
        cv::Mat out(in.size(), in.type());
        start(walk, in, out, Layout{40, 40, 4, 8, 1});
        while (walk.nextBlock() != nullptr) {
            walk.doneABlock();
        }
        EXPECT_TRUE(sameBits(out, in));
    }
}

TEST(BlockProcP1, UnstoredFirstBlockIsHandedOutAgain) {
    const cv::Mat in = noise<std::uint8_t>(90, 20);
    CBlockProcP1 walk;
    start(walk, in, cv::Mat(), Layout{40, 40, 4});
    const cv::Mat first = walk.nextBlock()->clone();
    EXPECT_TRUE(sameBits(*walk.nextBlock(), first));
}

} // namespace
