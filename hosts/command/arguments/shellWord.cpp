#include "hosts/command/arguments/shellWord.h"

namespace velorn {

std::string shellWord(const std::string& text) {
    constexpr const char* kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                                   "_-+=.,/:@%";
    if (!text.empty() && text.find_first_not_of(kPlain) == std::string::npos) {
        return text;
    }
    std::string quoted = "'";
    for (const char c : text) {
        // A quote ends the quoted part, follows escaped, and begins another part.
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

} // namespace velorn
