// Runs shells with the scripts that the command prints.
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <sstream>

namespace {

using vel::test::ProgramResult;
using vel::test::runProgram;
using vel::test::TemporaryFolder;
using vel::test::writeText;

const std::string kProgram = VELORN_PROGRAM;

std::set<std::string> linesOf(const std::string& text) {
    std::set<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.insert(line);
    }
    return lines;
}

std::set<std::string> longOptionsIn(const std::string& text) {
    const std::regex option("--[a-z][a-z-]*[a-z]");
    return {std::sregex_token_iterator(text.begin(), text.end(), option),
            std::sregex_token_iterator()};
}

class ShellCompletion : public testing::Test {
protected:
    ShellCompletion() {
        writeText(m_folder / "photo.jpg", "");
        writeText(m_folder / "two words.png", "");
    }

    std::string scriptFor(const std::string& shell, const std::string& name) {
        const ProgramResult result = runProgram({kProgram, "completion", shell});
        EXPECT_EQ(result.exitStatus, 0) << result.errors;
        writeText(m_folder / name, result.output);
        return (m_folder / name).string();
    }

    ProgramResult runInFolder(const std::vector<std::string>& words) {
        return runProgram(words, [&] { std::filesystem::current_path(m_folder / ""); });
    }

    /// The completions of the last word in bash.
    std::set<std::string> inBash(const std::vector<std::string>& words) {
        std::vector<std::string> line{
            "/bin/bash", "-c",
            "source \"$1\"; shift; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _velorn; "
            "for word in \"${COMPREPLY[@]}\"; do echo \"$word\"; done",
            "bash", scriptFor("bash", "script.bash")};
        line.insert(line.end(), words.begin(), words.end());
        const ProgramResult result = runInFolder(line);
        EXPECT_EQ(result.errors, "");
        return linesOf(result.output);
    }

    /// The completions of the last word in fish, without descriptions.
    std::set<std::string> inFish(const std::string& line) {
        const ProgramResult result =
            runInFolder({"/usr/bin/fish", "--no-config", "-c",
                         "source " + scriptFor("fish", "script.fish") + "; complete -C '" + line +
                             "' | string replace -r '\\t.*' ''"});
        EXPECT_EQ(result.errors, "");
        return linesOf(result.output);
    }

    /// The line in zsh after the tabulator.
    std::string inZsh(const std::string& line) {
        std::filesystem::create_directory(m_folder / "zsh");
        scriptFor("zsh", "zsh/_velorn");
        const std::string functions = (m_folder / "zsh").string();
        const ProgramResult result =
            runInFolder({"/usr/bin/zsh", "-f", "-c",
                         "zmodload zsh/zpty\n"
                         "zpty z \"TERM=dumb zsh -f -i\"\n"
                         "zpty -w z \"fpath=($1 \\$fpath); autoload -Uz compinit; compinit -u -D; "
                         "echo rea''dy\"\n"
                         "zpty -r z out '*ready*'\n"
                         "zpty -w -n z \"$2\"$'\\t\\C-a'\"echo '<\"$'\\C-e'\">'\"$'\\n'\n"
                         "zpty -r z out '*\n<*>*'\n"
                         "zpty -d z\n"
                         "print -r -- \"${${out##*$'\\n'<}%%>*}\"\n",
                         "zsh", functions, line});
        return result.output.substr(0, result.output.find('\n'));
    }

    TemporaryFolder m_folder;
};

TEST_F(ShellCompletion, BashCompletesCommands) {
    EXPECT_TRUE(inBash({"velorn", ""}).contains("estimate"));
    EXPECT_EQ(inBash({"velorn", "deb"}), std::set<std::string>{"deblur"});
    EXPECT_EQ(inBash({"velorn", "kernel", ""}),
              (std::set<std::string>{"disc", "gaussian", "motion"}));
    EXPECT_EQ(inBash({"velorn", "completion", ""}), (std::set<std::string>{"bash", "fish", "zsh"}));
}

TEST_F(ShellCompletion, BashCompletesEveryOptionThatHelpLists) {
    for (const std::string command : {"deblur", "estimate", "preview"}) {
        const ProgramResult help = runProgram({kProgram, command, "--help"});
        const auto completed = inBash({"velorn", command, "--"});
        // The help of a command also mentions options of others.
        std::set<std::string> listed;
        for (const std::string& line : linesOf(help.output)) {
            if (line.starts_with("  -")) {
                listed.merge(longOptionsIn(line));
            }
        }
        EXPECT_GT(listed.size(), 2u);
        EXPECT_EQ(completed, listed) << command;
    }
}

TEST_F(ShellCompletion, BashCompletesValuesAndFiles) {
    const std::set<std::string> presets{"crisp", "lens", "motion", "scan"};
    const std::set<std::string> files{"photo.jpg", "script.bash", "two words.png"};
    EXPECT_EQ(inBash({"velorn", "deblur", "--preset", ""}), presets);
    EXPECT_EQ(inBash({"velorn", "deblur", "--preset", "="}), presets);
    EXPECT_EQ(inBash({"velorn", "deblur", "--preset", "=", "l"}), std::set<std::string>{"lens"});
    EXPECT_EQ(inBash({"velorn", "deblur", "--light", ""}),
              (std::set<std::string>{"auto", "display", "linear"}));
    EXPECT_EQ(inBash({"velorn", "deblur", "--disc", ""}), std::set<std::string>{});
    EXPECT_EQ(inBash({"velorn", "deblur", "--kernel", ""}), files);
    EXPECT_EQ(inBash({"velorn", "deblur", "--blind", ""}), files);
    EXPECT_EQ(inBash({"velorn", "deblur", "--disc", "3", "t"}),
              std::set<std::string>{"two words.png"});
    EXPECT_EQ(inBash({"velorn", "kernel", "disc", "3", "-o", "p"}),
              std::set<std::string>{"photo.jpg"});
    EXPECT_EQ(inBash({"velorn", "deblur", "--", "--pre"}), std::set<std::string>{});
}

TEST_F(ShellCompletion, FishCompletesCommandsOptionsValuesAndFiles) {
    EXPECT_EQ(inFish("velorn est"), std::set<std::string>{"estimate"});
    EXPECT_EQ(inFish("velorn kernel "), (std::set<std::string>{"disc", "gaussian", "motion"}));
    EXPECT_EQ(inFish("velorn deblur --pres"), std::set<std::string>{"--preset"});
    EXPECT_EQ(inFish("velorn deblur --preset "),
              (std::set<std::string>{"crisp", "lens", "motion", "scan"}));
    EXPECT_EQ(inFish("velorn deblur --kernel p"), std::set<std::string>{"photo.jpg"});
    EXPECT_EQ(inFish("velorn deblur p"), std::set<std::string>{"photo.jpg"});
    EXPECT_EQ(inFish("velorn completion f"), std::set<std::string>{"fish"});
}

TEST_F(ShellCompletion, ZshCompletesCommandsOptionsValuesAndFiles) {
    EXPECT_EQ(inZsh("velorn est"), "velorn estimate");
    EXPECT_EQ(inZsh("velorn kernel d"), "velorn kernel disc");
    EXPECT_EQ(inZsh("velorn deblur --keep"), "velorn deblur --keep-clipped");
    EXPECT_EQ(inZsh("velorn deblur --preset l"), "velorn deblur --preset lens");
    EXPECT_EQ(inZsh("velorn deblur --kernel p"), "velorn deblur --kernel photo.jpg");
    EXPECT_EQ(inZsh("velorn deblur --disc 3 p"), "velorn deblur --disc 3 photo.jpg");
    EXPECT_EQ(inZsh("velorn completion f"), "velorn completion fish");
}

TEST_F(ShellCompletion, UnknownShellsAreRefused) {
    const ProgramResult result = runProgram({kProgram, "completion", "fis"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.errors,
              "velorn: SHELL must be bash, zsh or fish, not 'fis'; did you mean fish?\n");
}

} // namespace
