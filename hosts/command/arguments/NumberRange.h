#pragma once

#include <string>

namespace velorn {

/// The range of the numbers that an option takes.
struct NumberRange {
    float lowest;
    float highest;

    /// "LOWEST..HIGHEST", for help texts.
    std::string text() const;

    /// Checks that `value` is in the range.
    /// @throws UsageFailure "NAME must be from LOWEST to HIGHEST", with `unit` at the end.
    void check(const std::string& name, float value, const std::string& unit = {}) const;
};

} // namespace velorn
