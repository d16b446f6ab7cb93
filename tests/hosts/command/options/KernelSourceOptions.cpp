#include "hosts/command/options/KernelSourceOptions.h"

#include "hosts/command/terminal/Failure.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using velorn::Argument;
using velorn::ArgumentParser;
using velorn::KernelSourceOptions;
using velorn::UsageFailure;

/// A command with --kernel and the options.
class KernelSources : public testing::Test {
protected:
    KernelSources() {
        const Argument kernel = m_parser.add("--kernel", m_file, "A file.");
        m_options.addScale(m_parser, kernel);
        m_options.addBlind(m_parser, "Blurs", "Searches.");
        m_options.addLocal(m_parser);
    }

    void parse(const std::vector<std::string>& words) {
        std::ostringstream out;
        m_parser.parse(words, out);
    }

    std::string m_file;
    KernelSourceOptions m_options;
    ArgumentParser m_parser{"program", "Tests."};
};

TEST_F(KernelSources, ScaleIsThatOfTheCommandLine) {
    parse({"--kernel", "k.png", "--kernel-scale", "511"});
    EXPECT_EQ(m_options.scale(), 511);
    EXPECT_FALSE(m_options.blind().isGiven());
}

TEST_F(KernelSources, ScaleIsLeftToTheFile) {
    parse({"--kernel", "k.png"});
    EXPECT_EQ(m_options.scale(), std::nullopt);
}

TEST_F(KernelSources, ScaleOutOfRangeIsRefused) {
    parse({"--kernel", "k.png", "--kernel-scale", "512"});
    EXPECT_THROW(m_options.scale(), UsageFailure);
}

TEST_F(KernelSources, OptionsNeedTheSourceThatTheyConcern) {
    EXPECT_THROW(parse({"--kernel-scale", "2"}), UsageFailure);
    EXPECT_THROW(parse({"--local"}), UsageFailure);
    EXPECT_THROW(parse({"--turn", "no"}), UsageFailure);
    EXPECT_THROW(parse({"--strict"}), UsageFailure);
}

TEST_F(KernelSources, GroupHoldsAllButBlind) {
    parse({"--blind", "9", "--turn", "no", "--local"});
    EXPECT_TRUE(m_options.blind().isGiven());
    EXPECT_TRUE(m_options.search().result().isLocal);
    EXPECT_EQ(m_parser.givenWords("Blurs"), " --blind 9");
    EXPECT_EQ(m_parser.givenWords(KernelSourceOptions::kGroup), " --turn no --local");
}

} // namespace
