// Compares the manual page and docs/formats.md with the program.
#include "hosts/command/commands/CommandLine.h"
#include "hosts/command/formats/formatTexts.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <sstream>

namespace {

std::set<std::string> optionsIn(const std::string& text) {
    const std::regex option("--[a-z][a-z-]*[a-z]");
    return {std::sregex_token_iterator(text.begin(), text.end(), option),
            std::sregex_token_iterator()};
}

std::string helpOf(const char* command) {
    const std::vector<const char*> words{"velorn", command, "--help"};
    std::ostringstream out;
    velorn::parseCommandLine(static_cast<int>(words.size()), words.data(), out);
    return out.str();
}

TEST(ManualPage, DocumentsEveryOptionAndNoOther) {
    const auto bytes = vel::test::bytesOfFile(MANUAL_PAGE);
    const std::string page =
        std::regex_replace(std::string(bytes.begin(), bytes.end()), std::regex(R"(\\-)"), "-");
    std::set<std::string> known{"--help", "--version"};
    for (const char* command : {"deblur", "try", "estimate", "kernel", "preview", "completion"}) {
        EXPECT_NE(page.find(".B velorn " + std::string(command)), std::string::npos) << command;
        known.merge(optionsIn(helpOf(command)));
    }
    known.insert("--output"); // of the commands of 'velorn kernel', which have their own help
    EXPECT_EQ(optionsIn(page), known);
}

std::string textOfFile(const char* path) {
    const auto bytes = vel::test::bytesOfFile(path);
    return {bytes.begin(), bytes.end()};
}

TEST(ManualPage, ListsTheFormatsOfTheTable) {
    EXPECT_NE(textOfFile(MANUAL_PAGE).find(velorn::formatManual()), std::string::npos)
        << velorn::formatManual();
}

TEST(ManualPage, BeginsLinesWithADotOnlyForRequests) {
    const std::set<std::string> requests{".TH", ".SH", ".PP", ".TP", ".B",  ".I",
                                         ".BI", ".BR", ".RB", ".br", ".nf", ".fi"};
    std::istringstream page(textOfFile(MANUAL_PAGE));
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with('.')) {
            EXPECT_TRUE(requests.contains(line.substr(0, line.find(' ')))) << line;
        }
    }
}

TEST(FormatsPage, HasTheTableOfTheProgram) {
    EXPECT_NE(textOfFile(FORMATS_PAGE).find(velorn::formatTableMarkdown()), std::string::npos)
        << velorn::formatTableMarkdown();
}

} // namespace
