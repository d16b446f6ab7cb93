#include "hosts/command/arguments/usageMessage.h"

#include "tests/hosts/command/options/parsedCommand.h"

#include <gtest/gtest.h>

namespace {

using vel::test::usageFailureOf;

TEST(UsageMessage, UnknownCommandsAreNamedWithTheNearestOneOrAll) {
    EXPECT_EQ(usageFailureOf({"deblurr", "a.png"}),
              "unknown command 'deblurr'; did you mean deblur?");
    EXPECT_EQ(usageFailureOf({"nonsense"}).find("unknown command 'nonsense': the commands are "),
              0u);
    EXPECT_EQ(usageFailureOf({"kernel", "disk", "3", "-o", "k.txt"}),
              "unknown command 'disk'; did you mean disc?");
}

TEST(UsageMessage, UnknownOptionsAreNamedWithTheNearestOne) {
    EXPECT_EQ(usageFailureOf({"deblur", "a.png", "b.png", "--gausian", "3"}),
              "unknown option '--gausian'; did you mean --gaussian?");
    EXPECT_EQ(usageFailureOf({"deblur", "--gausian=3"}),
              "unknown option '--gausian'; did you mean --gaussian?");
    EXPECT_EQ(usageFailureOf({"deblur", "a.png", "b.png", "--disc", "3", "-x"}),
              "unknown option '-x'; see 'velorn deblur --help'");
}

TEST(UsageMessage, OptionsOfOtherCommandsNameThatCommand) {
    EXPECT_EQ(usageFailureOf({"estimate", "a.png", "--motion", "3,4"}),
              "unknown option '--motion' of 'velorn estimate': it belongs to 'velorn deblur'");
}

TEST(UsageMessage, MissingArgumentsAreListed) {
    EXPECT_EQ(usageFailureOf({"kernel", "motion", "3"}),
              "'velorn kernel motion' needs --output and ANGLE; see 'velorn kernel motion --help'");
}

TEST(UsageMessage, MissingConditionsAreNamed) {
    EXPECT_EQ(usageFailureOf({"deblur", "a.png", "b.png", "--disc", "3", "--kernel-scale", "2"}),
              "--kernel-scale requires --kernel");
}

TEST(UsageMessage, NumbersOfValuesAreExplained) {
    EXPECT_EQ(usageFailureOf({"deblur", "a.png", "b.png", "--disc"}),
              "--disc needs a value: RADIUS");
    EXPECT_EQ(usageFailureOf({"deblur", "a.png", "b.png", "--disc", "3", "--disc", "4"}),
              "--disc may be given only once");
    EXPECT_EQ(usageFailureOf({"deblur", "a.png", "b.png", "--motion", "5"}),
              "--motion needs 2 values separated by commas: LENGTH,ANGLE");
    EXPECT_EQ(usageFailureOf({"deblur", "a.png", "b.png", "--disc", "3", "--verbose=5"}),
              "--verbose takes no value");
}

TEST(UsageMessage, WordsThatAreNotNumbersAreShown) {
    EXPECT_EQ(usageFailureOf({"deblur", "a.png", "b.png", "--disc", "wide"}),
              "--disc needs a number, not 'wide'");
    EXPECT_EQ(usageFailureOf({"deblur", "a.png", "b.png", "--disc", ""}),
              "--disc needs a number, not ''");
    EXPECT_EQ(usageFailureOf({"deblur", "a.png", "b.png", "--disc", "3", "--threads", "1.5"}),
              "--threads needs a whole number, not '1.5'");
    EXPECT_EQ(
        usageFailureOf({"deblur", "a.png", "b.png", "--disc", "3", "--threads", "99999999999"}),
        "--threads: '99999999999' is out of range");
}

TEST(UsageMessage, NamesOutsideOfAChoiceAreComparedWithIt) {
    EXPECT_EQ(usageFailureOf({"deblur", "a.png", "b.png", "--disc", "3", "--preset", "crips"}),
              "--preset must be lens, motion, scan or crisp, not 'crips'; did you mean crisp?");
    EXPECT_EQ(usageFailureOf({"deblur", "a.png", "b.png", "--disc", "3", "--light", "moon"}),
              "--light must be auto, linear or display, not 'moon'");
}

TEST(UsageMessage, WordsAfterTwoDashesAreFiles) {
    const auto options = vel::test::parsedAs<velorn::DeblurOptions>(
        {"deblur", "--disc", "3", "--", "-a.png", "--b.png"});
    EXPECT_EQ(options.input, "-a.png");
    EXPECT_EQ(options.output, "--b.png");
    EXPECT_EQ(usageFailureOf({"estimate", "--", "-a.png", "--size"}),
              "unexpected argument '--size'");
}

} // namespace
