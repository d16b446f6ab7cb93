#include "velimproclib/catalogue/pixels/FurtherChannelMoves.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PlaneShapes.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace vel;

template <class T>
using Move = Status (*)(const T*, std::int32_t, T*, std::int32_t, std::int32_t,
                        std::int32_t) noexcept;

template <class T>
void expectTakesEachChannel(Move<T> channelToPlane, int channels) {
    std::mt19937 random(12);
    for (const test::PlaneShape& shape : test::planeShapes(random)) {
        auto image = shape.plane<T>(channels);
        image.fill([&] { return random(); });
        for (int c = 0; c < channels; ++c) {
            auto plane = shape.plane<T>();
            const auto expected =
                test::mapped(plane, [&](T, int x, int y) { return image.at(channels * x + c, y); });
            ASSERT_EQ(channelToPlane(image.data() + c, image.step(), plane.data(), plane.step(),
                                     shape.width, shape.height),
                      kOk);
            EXPECT_TRUE(plane.sameBits(expected)) << "channel " << c;
            EXPECT_TRUE(plane.intact());
        }
    }
}

template <class T>
void expectChecksInOrder(Move<T> move) {
    test::expectChecksInOrder({"move", 2, 2, 2, [move](const test::CheckedArguments& g) {
                                   return move(g.at<T>(0), g.steps[0], g.at<T>(1), g.steps[1],
                                               g.sizes[0], g.sizes[1]);
                               }});
}

TEST(FurtherChannelMoves, EachChannelComesOutAsAPlane) {
    expectTakesEachChannel<std::uint8_t>(channelToPlaneC4U8, 4);
    expectTakesEachChannel<std::uint16_t>(channelToPlaneC4U16, 4);
    expectTakesEachChannel<std::uint16_t>(channelToPlaneC3U16, 3);
}

TEST(FurtherChannelMoves, PlaneFillsOneChannelAndLeavesTheOthers) {
    std::mt19937 random(13);
    for (const test::PlaneShape& shape : test::planeShapes(random)) {
        auto plane = shape.plane<std::uint16_t>();
        plane.fill([&] { return random(); });
        auto image = shape.plane<std::uint16_t>(4);
        image.fill([&] { return random(); });
        for (int c = 0; c < 4; ++c) {
            const auto expected = test::mapped(image, [&](std::uint16_t v, int x, int y) {
                return x % 4 == c ? plane.at(x / 4, y) : v;
            });
            ASSERT_EQ(planeToChannelC4U16(plane.data(), plane.step(), image.data() + c,
                                          image.step(), shape.width, shape.height),
                      kOk);
            EXPECT_TRUE(image.sameBits(expected)) << "channel " << c;
            EXPECT_TRUE(image.intact());
        }
    }
}

TEST(FurtherChannelMoves, EveryRoutineChecksPointersThenSizesThenStepsAndWritesNothing) {
    expectChecksInOrder<std::uint8_t>(channelToPlaneC4U8);
    expectChecksInOrder<std::uint16_t>(channelToPlaneC3U16);
    expectChecksInOrder<std::uint16_t>(channelToPlaneC4U16);
    expectChecksInOrder<std::uint16_t>(planeToChannelC4U16);
}

} // namespace
