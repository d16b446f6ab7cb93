#include "hosts/command/options/PreviewOptions.h"

#include "tests/hosts/command/options/parsedCommand.h"

#include <gtest/gtest.h>

namespace {

using vel::test::parsedAs;
using velorn::PreviewOptions;

TEST(PreviewOptions, ScaleAndProfileHaveDefaults) {
    const auto options = parsedAs<PreviewOptions>({"preview", "in.tif", "out.png"});
    EXPECT_EQ(options.input, "in.tif");
    EXPECT_EQ(options.output, "out.png");
    EXPECT_EQ(options.scale, 1.0f);
    EXPECT_FALSE(options.profile.has_value());
}

TEST(PreviewOptions, ScaleAndProfileAreStored) {
    const auto options = parsedAs<PreviewOptions>(
        {"preview", "--scale", "0.5", "--profile", "d.icc", "in.tif", "out.png"});
    EXPECT_EQ(options.scale, 0.5f);
    EXPECT_EQ(options.profile, "d.icc");
}

TEST(PreviewOptions, ScaleOutOfRangeIsRefused) {
    for (const char* scale : {"0", "-1", "0.009", "33", "nan", "inf"}) {
        EXPECT_EQ(vel::test::usageFailureOf({"preview", "in.tif", "out.png", "--scale", scale}),
                  "--scale must be from 0.01 to 32")
            << scale;
    }
}

} // namespace
