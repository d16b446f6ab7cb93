#include "hosts/command/options/QualityOption.h"

#include "tests/hosts/command/options/parsedCommand.h"

#include <gtest/gtest.h>

namespace {

using vel::test::CommandWords;

CommandWords withQuality(const char* text) {
    return {"deblur", "in.png", "out.png", "--disc", "2", "--quality", text};
}

velorn::DeblurOptions parsed(const char* text) {
    return vel::test::parsedAs<velorn::DeblurOptions>(withQuality(text));
}

TEST(QualityOption, NameIsForTheRestorationAndNumberForTheFile) {
    EXPECT_EQ(parsed("best").settings.quality, VELORN_QUALITY_BEST);
    EXPECT_EQ(parsed("best").files.encoding.quality, std::nullopt);
    EXPECT_EQ(parsed("90").settings.quality, VELORN_QUALITY_NORMAL);
    EXPECT_EQ(parsed("90").files.encoding.quality, 90);
    for (const char* both : {"fast,1", "1,fast"}) {
        EXPECT_EQ(parsed(both).settings.quality, VELORN_QUALITY_FAST);
        EXPECT_EQ(parsed(both).files.encoding.quality, 1);
    }
}

TEST(QualityOption, OtherTextsAreRefused) {
    for (const char* text : {"good", "0", "101", "-3", "90,80", "best,fast", "90,", ",", "90.5"}) {
        EXPECT_EQ(vel::test::usageFailureOf(withQuality(text)).find("--quality must be fast, "), 0u)
            << text;
    }
}

} // namespace
