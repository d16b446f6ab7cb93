#include "velimproclib/catalogue/fft/FloatPlane.h"

#include "tests/support/GuardedPlane.h"

#include <gtest/gtest.h>

namespace {

using namespace vel;
using test::GuardedPlane;

TEST(FloatPlane, ReadsAndWritesElementsAtAnyAlignmentAndStep) {
    GuardedPlane<float> memory(5, 4, 3, 1);
    memory.fill([value = 0.0f]() mutable { return value += 1.0f; });
    const FloatPlane plane(memory.data(), memory.step());
    EXPECT_EQ(plane.get(0, 0), 1.0f);
    EXPECT_EQ(plane.get(4, 3), 20.0f);
    plane.put(2, 3, -7.0f);
    EXPECT_EQ(memory.at(2, 3), -7.0f);
    EXPECT_EQ(plane.at(1, 2) - plane.at(0, 0), 2 * memory.step() + 4);
    EXPECT_TRUE(memory.intact());
}

} // namespace
