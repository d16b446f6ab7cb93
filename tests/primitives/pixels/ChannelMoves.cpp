#include "velimproclib/primitives/pixels/ChannelMoves.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PlaneShapes.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <random>
#include <vector>

namespace {

using namespace vel;
using test::GuardedPlane;
using test::PlaneShape;

template <class T>
using Move = Status (*)(const T*, std::int32_t, T*, std::int32_t, std::int32_t,
                        std::int32_t) noexcept;

/// Every channel of images with `channels` elements per pixel. The last element of the image ends
/// its row; therefore a write beyond the region damages the canaries.
template <class T>
void expectFillsOneChannelOnly(Move<T> planeToChannel, int channels) {
    std::mt19937 random(11);
    for (const PlaneShape& shape : test::planeShapes(random)) {
        GuardedPlane<T> plane(shape.width, shape.height, shape.extraStep / 2, shape.misalign / 3);
        GuardedPlane<T> image(shape.width * channels, shape.height, shape.extraStep,
                              shape.misalign);
        plane.fill([&] { return random(); });
        image.fill([&] { return random(); });
        for (int c = 0; c < channels; ++c) {
            GuardedPlane<T> expected = image;
            for (int y = 0; y < shape.height; ++y) {
                for (int x = 0; x < shape.width; ++x) {
                    expected.set(channels * x + c, y, plane.at(x, y));
                }
            }
            test::forEachTarget([&] {
                GuardedPlane<T> dst = image;
                ASSERT_EQ(planeToChannel(plane.data(), plane.step(), dst.data() + c, dst.step(),
                                         shape.width, shape.height),
                          kOk);
                EXPECT_TRUE(dst.sameBits(expected))
                    << shape.width << " by " << shape.height << ", channel " << c;
                EXPECT_TRUE(dst.intact());
            });
        }
    }
}

template <class T>
void expectTakesOneChannel(Move<T> channelToPlane, int channels) {
    std::mt19937 random(12);
    for (const PlaneShape& shape : test::planeShapes(random)) {
        GuardedPlane<T> image(shape.width * channels, shape.height, shape.extraStep,
                              shape.misalign);
        image.fill([&] { return random(); });
        for (int c = 0; c < channels; ++c) {
            GuardedPlane<T> expected(shape.width, shape.height, shape.extraStep / 2,
                                     shape.misalign / 3);
            GuardedPlane<T> blank = expected;
            for (int y = 0; y < shape.height; ++y) {
                for (int x = 0; x < shape.width; ++x) {
                    expected.set(x, y, image.at(channels * x + c, y));
                }
            }
            test::forEachTarget([&] {
                GuardedPlane<T> dst = blank;
                ASSERT_EQ(channelToPlane(image.data() + c, image.step(), dst.data(), dst.step(),
                                         shape.width, shape.height),
                          kOk);
                EXPECT_TRUE(dst.sameBits(expected))
                    << shape.width << " by " << shape.height << ", channel " << c;
                EXPECT_TRUE(dst.intact());
            });
        }
    }
}

/// `unalignedChannelToPlaneC3U16` with the pointers of the other moves.
Status takeC3U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                 std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return unalignedChannelToPlaneC3U16(unaligned(src), srcStep, dst, dstStep, w, h);
}

TEST(ChannelMoves, PlaneFillsOneOfThreeChannels) {
    expectFillsOneChannelOnly<std::uint8_t>(planeToChannelC3U8, 3);
    expectFillsOneChannelOnly<std::uint16_t>(planeToChannelC3U16, 3);
}

TEST(ChannelMoves, PlaneFillsOneOfFourChannels) {
    expectFillsOneChannelOnly<std::uint8_t>(planeToChannelC4U8, 4);
}

TEST(ChannelMoves, OneOfThreeChannelsBecomesAPlane) {
    expectTakesOneChannel<std::uint8_t>(channelToPlaneC3U8, 3);
    expectTakesOneChannel<std::uint16_t>(takeC3U16, 3);
}

TEST(ChannelMoves, SetFillsOneOfFourChannelsWithAValue) {
    std::mt19937 random(13);
    for (const PlaneShape& shape : test::planeShapes(random)) {
        GuardedPlane<std::uint8_t> image(shape.width * 4, shape.height, shape.extraStep,
                                         shape.misalign);
        image.fill([&] { return random(); });
        const auto value = static_cast<std::uint8_t>(random());
        for (int c = 0; c < 4; ++c) {
            GuardedPlane<std::uint8_t> expected = image;
            for (int y = 0; y < shape.height; ++y) {
                for (int x = 0; x < shape.width; ++x) {
                    expected.set(4 * x + c, y, value);
                }
            }
            test::forEachTarget([&] {
                GuardedPlane<std::uint8_t> dst = image;
                ASSERT_EQ(
                    setChannelC4U8(value, dst.data() + c, dst.step(), shape.width, shape.height),
                    kOk);
                EXPECT_TRUE(dst.sameBits(expected))
                    << shape.width << " by " << shape.height << ", channel " << c;
                EXPECT_TRUE(dst.intact());
            });
        }
    }
}

/// The last element of the region is the last of its memory block: the address sanitizer reports
/// any read or write beyond it.
TEST(ChannelMoves, RegionMayEndWithItsMemoryBlock) {
    for (std::size_t width = 1; width < 200; ++width) {
        const auto w = static_cast<std::int32_t>(width);
        const std::vector<std::uint16_t> plane(width, 7);
        std::vector<std::uint16_t> three(3 * (width - 1) + 1);
        std::vector<std::uint16_t> out(width);
        test::forEachTarget([&] {
            EXPECT_EQ(planeToChannelC3U16(plane.data(), 1, three.data(), 1, w, 1), kOk);
            EXPECT_EQ(takeC3U16(three.data(), 1, out.data(), 1, w, 1), kOk);
            EXPECT_EQ(out, plane);
        });
        const std::vector<std::uint8_t> plane8(width, 7);
        std::vector<std::uint8_t> three8(3 * (width - 1) + 1);
        std::vector<std::uint8_t> four8(4 * (width - 1) + 1);
        std::vector<std::uint8_t> out8(width);
        test::forEachTarget([&] {
            EXPECT_EQ(planeToChannelC3U8(plane8.data(), 1, three8.data(), 1, w, 1), kOk);
            EXPECT_EQ(channelToPlaneC3U8(three8.data(), 1, out8.data(), 1, w, 1), kOk);
            EXPECT_EQ(out8, plane8);
            EXPECT_EQ(planeToChannelC4U8(plane8.data(), 1, four8.data(), 1, w, 1), kOk);
            for (std::size_t x = 0; x < width; ++x) {
                EXPECT_EQ(four8[4 * x], 7);
            }
            EXPECT_EQ(setChannelC4U8(9, four8.data(), 1, w, 1), kOk);
            EXPECT_EQ(four8.back(), 9);
        });
    }
}

template <class T>
void expectChecksInOrder(std::initializer_list<Move<T>> moves) {
    for (const Move<T> move : moves) {
        test::expectChecksInOrder({"move", 2, 2, 2, [move](const test::CheckedArguments& g) {
                                       return move(g.at<T>(0), g.steps[0], g.at<T>(1), g.steps[1],
                                                   g.sizes[0], g.sizes[1]);
                                   }});
    }
}

TEST(ChannelMoves, EveryRoutineChecksPointersThenSizesThenStepsAndWritesNothing) {
    expectChecksInOrder<std::uint8_t>({planeToChannelC3U8, channelToPlaneC3U8, planeToChannelC4U8});
    expectChecksInOrder<std::uint16_t>({planeToChannelC3U16, takeC3U16});
    test::expectChecksInOrder({"setChannelC4U8", 1, 2, 1, [](const test::CheckedArguments& g) {
                                   return setChannelC4U8(1, g.at<std::uint8_t>(0), g.steps[0],
                                                         g.sizes[0], g.sizes[1]);
                               }});
}

} // namespace
