#include "hosts/command/arguments/wrapped.h"

#include <algorithm>
#include <sstream>

namespace velorn {
namespace {

void appendWrapped(std::string& result, const std::string& line, std::size_t width) {
    const std::string indent(std::min(line.find_first_not_of(' '), line.size()), ' ');
    std::string part = indent;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
        const bool isFirst = part.size() == indent.size();
        if (!isFirst && part.size() + 1 + word.size() > width) {
            result.append(part).append("\n");
            part = indent + word;
        } else {
            part.append(isFirst ? "" : " ").append(word);
        }
    }
    result.append(part).append("\n");
}

} // namespace

std::string wrapped(const std::string& text, std::size_t width) {
    std::string result;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        appendWrapped(result, line, width);
    }
    return result;
}

} // namespace velorn
