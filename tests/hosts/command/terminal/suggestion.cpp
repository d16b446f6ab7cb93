#include "hosts/command/terminal/suggestion.h"

#include <gtest/gtest.h>

namespace {

using velorn::editDistance;
using velorn::suggestion;

TEST(EditDistance, CountsInsertionsRemovalsReplacementsAndExchanges) {
    EXPECT_EQ(editDistance("", ""), 0u);
    EXPECT_EQ(editDistance("disc", "disc"), 0u);
    EXPECT_EQ(editDistance("disc", ""), 4u);
    EXPECT_EQ(editDistance("disc", "disk"), 1u);
    EXPECT_EQ(editDistance("gausian", "gaussian"), 1u);
    EXPECT_EQ(editDistance("sharpenn", "sharpen"), 1u);
    EXPECT_EQ(editDistance("crips", "crisp"), 1u);
    EXPECT_EQ(editDistance("kitten", "sitting"), 3u);
}

TEST(EditDistance, IsSymmetric) {
    EXPECT_EQ(editDistance("estimate", "deblur"), editDistance("deblur", "estimate"));
}

TEST(Suggestion, NamesTheNearestName) {
    const std::vector<std::string> names{"--gaussian", "--disc", "--detail", "-o"};
    EXPECT_EQ(suggestion("--gausian", names), "; did you mean --gaussian?");
    EXPECT_EQ(suggestion("--gauss", names), "; did you mean --gaussian?");
    EXPECT_EQ(suggestion("-disk", names), "; did you mean --disc?");
}

TEST(Suggestion, IsEmptyWithoutASimilarName) {
    const std::vector<std::string> names{"--gaussian", "--disc", "--detail", "-o"};
    EXPECT_EQ(suggestion("--strange", names), "");
    EXPECT_EQ(suggestion("-x", names), "");
    EXPECT_EQ(suggestion("--", names), "");
    EXPECT_EQ(suggestion("", names), "");
    EXPECT_EQ(suggestion(std::string(100000, 'g'), names), "");
}

} // namespace
