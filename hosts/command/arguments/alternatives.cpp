#include "hosts/command/arguments/alternatives.h"

namespace velorn {

std::string alternatives(const std::vector<std::string>& names, const char* last) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool isLast = i + 1 == names.size();
        text.append(i == 0 ? "" : isLast ? last : ", ").append(names[i]);
    }
    return text;
}

} // namespace velorn
