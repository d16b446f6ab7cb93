#include "velimproclib/primitives/base/repeatedPixel.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>

namespace {

using namespace vel;

TEST(RepeatedPixel, RunHoldsWholePixelsOneAfterTheOther) {
    const float pixel[] = {1.5f, -2.0f, 3.0f, 0.25f};
    for (const std::size_t elements : {1, 3, 4}) {
        const RepeatedPixel<float> repeated(pixel, elements);
        EXPECT_EQ(RepeatedPixel<float>::kLength % elements, 0u);
        for (std::size_t i = 0; i < RepeatedPixel<float>::kLength; ++i) {
            EXPECT_EQ(repeated.run()[i], pixel[i % elements]) << i << " of " << elements;
        }
    }
}

TEST(RepeatedPixel, RunStartsAlignedForEveryVector) {
    const std::uint16_t pixel[] = {1, 2, 3};
    const RepeatedPixel<std::uint16_t> repeated(pixel, 3);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(repeated.run()) % 64, 0u);
}

TEST(RepeatedPixel, KeepsItsOwnCopyOfThePixel) {
    float pixel[] = {1.0f, 2.0f, 3.0f};
    const RepeatedPixel<float> repeated(pixel, 3);
    pixel[1] = 9.0f;
    EXPECT_EQ(repeated.run()[4], 2.0f);
}

} // namespace
