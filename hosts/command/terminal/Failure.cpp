#include "hosts/command/terminal/Failure.h"

#include <string_view>

namespace velorn {

std::string onOneLine(const std::string& text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    std::string line;
    std::size_t at = text.find_first_not_of(kBlanks);
    while (at != std::string::npos) {
        const std::size_t end = text.find_first_of("\r\n", at);
        std::string part = text.substr(at, end == std::string::npos ? end : end - at);
        part.erase(part.find_last_not_of(kBlanks) + 1);
        line += (line.empty() ? "" : " ") + part;
        at = end == std::string::npos ? end : text.find_first_not_of(kBlanks, end);
    }
    return line;
}

} // namespace velorn
