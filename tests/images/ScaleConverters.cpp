#include "velimproclib/images/ScaleConverters.h"

#include "tests/support/EachTarget.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "tests/support/PixelValues.h"
#include "tests/support/PlaneShapes.h"
#include "velimproclib/primitives/base/failures.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

namespace {

using namespace vel;
using namespace vel::test;

int plainU15(int level) {
    return 128 * (level + 1);
}

/// Rounds to the nearest level, ties to even.
int plainU8(int value) {
    const int above = std::max(value - 128, 0);
    const int down = above / 128;
    const int rest = above % 128;
    const int rounded = rest > 64 || (rest == 64 && down % 2 == 1) ? down + 1 : down;
    return std::min(rounded, 255);
}

std::vector<std::uint8_t> down(std::vector<std::uint16_t> values) {
    const auto count = static_cast<std::int32_t>(values.size());
    std::vector<std::uint8_t> levels(values.size(), 77);
    convertU15toU8(unaligned(values.data()), 2 * count, count, 1, levels.data(), count);
    return levels;
}

std::vector<std::uint16_t> up(std::vector<std::uint8_t> levels) {
    const auto count = static_cast<std::int32_t>(levels.size());
    std::vector<std::uint16_t> values(levels.size(), 77);
    convertU8toU15(levels.data(), count, count, 1, unaligned(values.data()), 2 * count);
    return values;
}

std::vector<std::uint8_t> allLevels() {
    std::vector<std::uint8_t> levels(256);
    std::iota(levels.begin(), levels.end(), std::uint8_t{0});
    return levels;
}

TEST(ScaleConverters, LevelsBecomeTheUpperEdgeOfTheirBin) {
    EXPECT_EQ(up({0, 1, 254, 255}), (std::vector<std::uint16_t>{128, 256, 32640, 32768}));
}

TEST(ScaleConverters, FifteenBitsRoundToTheNearestLevelTiesToEven) {
    EXPECT_EQ(down({0, 128, 192, 193, 255, 256, 320, 32768, 65535}),
              (std::vector<std::uint8_t>{0, 0, 0, 1, 1, 1, 2, 255, 255}));
}

TEST(ScaleConverters, EveryLevelAndEveryValueIsExactOnEveryTarget) {
    std::vector<std::uint16_t> values(65536);
    std::iota(values.begin(), values.end(), std::uint16_t{0});
    forEachTarget([&] {
        const auto raised = up(allLevels());
        const auto lowered = down(values);
        for (int level = 0; level < 256; ++level) {
            EXPECT_EQ(raised[static_cast<std::size_t>(level)], plainU15(level));
        }
        for (int value = 0; value < 65536; ++value) {
            ASSERT_EQ(lowered[static_cast<std::size_t>(value)], plainU8(value)) << value;
        }
    });
}

TEST(ScaleConverters, RoundTripOfEveryLevelIsTheIdentity) {
    EXPECT_EQ(down(up(allLevels())), allLevels());
}

TEST(ScaleConverters, AcceptEverySizeStepAndStart) {
    std::mt19937 random(1);
    for (const PlaneShape& shape : planeShapes(random)) {
        auto levels = shape.plane<std::uint8_t>();
        auto values = shape.plane<std::uint16_t>();
        levels.fill([&] { return randomPixel<std::uint8_t>(random); });
        values.fill([&] { return randomPixel<std::uint16_t>(random); });
        forEachTarget([&] {
            auto raised = shape.plane<std::uint16_t>();
            auto lowered = shape.plane<std::uint8_t>();
            convertU8toU15(levels.data(), levels.step(), shape.width, shape.height,
                           unaligned(raised.data()), raised.step());
            convertU15toU8(unaligned(values.data()), values.step(), shape.width, shape.height,
                           lowered.data(), lowered.step());
            EXPECT_TRUE(raised.intact());
            EXPECT_TRUE(lowered.intact());
            for (int y = 0; y < shape.height; ++y) {
                for (int x = 0; x < shape.width; ++x) {
                    ASSERT_EQ(raised.at(x, y), plainU15(levels.at(x, y)));
                    ASSERT_EQ(lowered.at(x, y), plainU8(values.at(x, y)));
                }
            }
        });
    }
}

TEST(ScaleConverters, NullPointersAndBadSizesLeaveTheTargetUnchanged) {
    struct Call {
        bool source, target;
        std::int32_t step, width, height;
    };
    for (const Call& call :
         {Call{false, true, 8, 2, 2}, Call{true, false, 8, 2, 2}, Call{true, true, 8, 0, 2},
          Call{true, true, 8, 2, 0}, Call{true, true, 8, -3, 2}, Call{true, true, 0, 2, 2}}) {
        std::vector<std::uint16_t> wide(16, 1000);
        std::vector<std::uint8_t> narrow(16, 100);
        convertU8toU15(call.source ? narrow.data() : nullptr, call.step, call.width, call.height,
                       unaligned(call.target ? wide.data() : nullptr), 8);
        EXPECT_EQ(wide, std::vector<std::uint16_t>(16, 1000));
        convertU15toU8(unaligned(call.source ? wide.data() : nullptr), call.step, call.width,
                       call.height, call.target ? narrow.data() : nullptr, 8);
        EXPECT_EQ(narrow, std::vector<std::uint8_t>(16, 100));
    }
}

TEST(ScaleConverters, PlaneTooLargeToAllocateFailsAndLeavesTheTargetUnchanged) {
    constexpr std::int32_t kHuge = std::numeric_limits<std::int32_t>::max();
    const std::vector<std::uint16_t> values(4, 1000);
    std::vector<std::uint8_t> levels(4, 100);
    try {
        convertU15toU8(unaligned(values.data()), kHuge, kHuge, 1, levels.data(), kHuge);
        FAIL() << "nothing was thrown";
    } catch (int failure) {
        EXPECT_EQ(failure, kNoPixels);
    }
    EXPECT_EQ(levels, std::vector<std::uint8_t>(4, 100));
}

} // namespace
