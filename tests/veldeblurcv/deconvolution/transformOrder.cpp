#include "velimproclib/veldeblurcv/deconvolution/transformOrder.h"

#include <gtest/gtest.h>

namespace {

using vel::transformOrder;

TEST(TransformOrder, TilesHaveTheirBinaryLogarithmAndOtherSidesHaveNone) {
    EXPECT_EQ(transformOrder(256), 8);
    EXPECT_EQ(transformOrder(512), 9);
    EXPECT_EQ(transformOrder(1024), 10);
    for (const int side : {-1, 0, 128, 255, 300, 2048}) {
        EXPECT_EQ(transformOrder(side), std::nullopt) << side;
    }
}

} // namespace
