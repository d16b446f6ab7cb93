#include "restoration/boundary/argumentChecks.h"

#include "restoration/failures/Failure.h"

#include <array>
#include <charconv>
#include <cmath>

namespace restoration {
namespace {

template <class Number>
std::string textOf(Number value) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), value).ptr;
    return {digits.begin(), end};
}

std::string limitsText(const FloatRange& range) {
    std::string text = "finite";
    if (std::isfinite(range.most)) {
        text = numberText(range.least) + ".." + numberText(range.most);
    } else if (std::isfinite(range.least)) {
        text = (range.excludesLeast ? "above " : "at least ") + numberText(range.least);
    }
    return range.allowsAutomatic ? text + ", or VELORN_AUTOMATIC" : text;
}

} // namespace

std::string numberText(float value) {
    return textOf(value);
}
std::string numberText(std::int64_t value) {
    return textOf(value);
}

void refuse(const std::string& message) {
    throw Failure(VELORN_STATUS_INVALID_ARGUMENT, message);
}

void requirePointer(const void* pointer, std::string_view name) {
    if (pointer == nullptr) {
        refuse(std::string(name) + " is null");
    }
}

void requireRange(std::int64_t value, std::int64_t least, std::int64_t most,
                  std::string_view name) {
    if (value < least || value > most) {
        const bool isBounded = most < std::numeric_limits<std::int32_t>::max();
        refuse(std::string(name) + " is " + numberText(value) + ", but must be " +
               (isBounded ? numberText(least) + ".." + numberText(most)
                          : "at least " + numberText(least)));
    }
}

void requireRange(float value, const FloatRange& range, std::string_view name) {
    const bool isAutomatic = range.allowsAutomatic && value == VELORN_AUTOMATIC;
    const bool isInside = std::isfinite(value) && value >= range.least && value <= range.most &&
                          !(range.excludesLeast && value == range.least);
    if (!isAutomatic && !isInside) {
        refuse(std::string(name) + " is " + numberText(value) + ", but must be " +
               limitsText(range));
    }
}

} // namespace restoration
