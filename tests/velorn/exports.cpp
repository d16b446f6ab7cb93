#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <string>

namespace velorntest {
namespace {

/// The names of the dynamic symbols that `nm` lists with `option`, without versions.
std::set<std::string> symbols(const std::string& option) {
    const std::string command =
        "nm -D " + option + " --format=posix '" + std::string(LIBVELORN) + "'";
    std::set<std::string> names;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    char line[4096];
    while (pipe && std::fgets(line, sizeof line, pipe.get()) != nullptr) {
        const std::string text(line);
        names.insert(text.substr(0, text.find_first_of(" @")));
    }
    return names;
}

std::set<std::string> documentedFunctions() {
    std::ifstream file(VELORN_HEADER);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::regex declaration(R"(VELORN_PUBLIC\s[^;(]*?\b(velorn\w+)\()");
    std::set<std::string> names;
    for (std::sregex_iterator match(text.begin(), text.end(), declaration), end; match != end;
         ++match) {
        names.insert((*match)[1]);
    }
    return names;
}

TEST(Exports, AreTheDocumentedFunctionsAndNothingElse) {
    const std::set<std::string> documented = documentedFunctions();
    EXPECT_EQ(documented.size(), 23u);
    EXPECT_EQ(symbols("--defined-only"), documented);
}

} // namespace
} // namespace velorntest
