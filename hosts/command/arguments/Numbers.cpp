#include "hosts/command/arguments/Numbers.h"

#include <charconv>

namespace velorn {

std::string numberText(float value) {
    char digits[64];
    const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed);
    return {digits, end.ptr};
}

std::vector<float> numberList(const std::string& text) {
    std::vector<float> numbers;
    const char* next = text.data();
    const char* const end = next + text.size();
    for (;;) {
        float number = 0.0f;
        const auto parsed = std::from_chars(next, end, number);
        if (parsed.ec != std::errc{}) {
            return {};
        }
        numbers.push_back(number);
        if (parsed.ptr == end) {
            return numbers;
        }
        if (*parsed.ptr != ',') {
            return {};
        }
        next = parsed.ptr + 1;
    }
}

} // namespace velorn
