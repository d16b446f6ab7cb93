#include "hosts/command/batch/OutputName.h"

#include "hosts/command/terminal/Failure.h"

#include <gtest/gtest.h>

namespace {

using velorn::OutputName;
using velorn::UsageFailure;

TEST(OutputName, DefaultIsTheNameOfTheInput) {
    EXPECT_EQ(OutputName(OutputName::kDefault).of("folder/a.b.JPG", 3), "a.b.JPG");
}

TEST(OutputName, FieldsAreReplaced) {
    EXPECT_EQ(OutputName("{stem}-restored{ext}").of("x/a.jpg", 1), "a-restored.jpg");
    EXPECT_EQ(OutputName("{number}-{stem}.png").of("a.jpg", 7), "0007-a.png");
    EXPECT_EQ(OutputName("{number}.png").of("a.jpg", 123456), "123456.png");
    EXPECT_EQ(OutputName("{{{stem}}}{ext}").of("a.jpg", 1), "{a}.jpg");
}

TEST(OutputName, WrongPatternsAreRefused) {
    for (const char* pattern :
         {"", "{name}", "{}", "{stem", "stem}", "a/{stem}", "{stem}{{}", "{ stem }"}) {
        EXPECT_THROW(OutputName{pattern}, UsageFailure) << pattern;
    }
}

TEST(OutputName, OnlyTheFieldKeepsTheExtension) {
    EXPECT_TRUE(OutputName("{stem}-2{ext}").keepsExtension());
    EXPECT_FALSE(OutputName("{stem}.jpg").keepsExtension());
    EXPECT_FALSE(OutputName("{stem}{{ext}}").keepsExtension());
}

} // namespace
