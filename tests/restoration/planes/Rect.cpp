#include "restoration/planes/Rect.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

TEST(Rect, IntersectionIsTheCommonPart) {
    EXPECT_EQ(intersection({0, 0, 10, 8}, {4, -3, 20, 6}), (Rect{4, 0, 6, 3}));
}

TEST(Rect, IntersectionOfSeparateRectanglesIsEmpty) {
    EXPECT_TRUE(intersection({0, 0, 4, 4}, {4, 0, 4, 4}).isEmpty());
}

} // namespace
} // namespace restoration
