#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

/// Checks of arguments. `name` is what the host calls the argument.
namespace restoration {

/// The shortest text of a number, in any locale.
std::string numberText(float value);
std::string numberText(std::int64_t value);

/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT with `message`
[[noreturn]] void refuse(const std::string& message);

/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for null
void requirePointer(const void* pointer, std::string_view name);

/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT outside of `least`..`most`
void requireRange(std::int64_t value, std::int64_t least, std::int64_t most, std::string_view name);

/// The legal values of a float argument. Never a number that is not finite.
struct FloatRange {
    float least = 0.0f;
    float most = std::numeric_limits<float>::infinity();
    bool excludesLeast = false;
    bool allowsAutomatic = false; ///< VELORN_AUTOMATIC is legal too
};

/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT outside of `range`
void requireRange(float value, const FloatRange& range, std::string_view name);

} // namespace restoration
