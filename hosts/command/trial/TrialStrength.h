#pragma once

#include <string>
#include <vector>

namespace velorn {

/// A strength of the deconvolution that a trial shows: a number, or a multiple of the strength that
/// the library chooses.
struct TrialStrength {
    double number = 1.0;
    /// Whether `number` multiplies the automatic strength.
    bool isRelative = true;

    bool isAutomatic() const { return isRelative && number == 1.0; }
    /// The strength, as a setting of the library. Multiples are rounded to two digits.
    /// @param automatic the strength that the library chooses, above 0
    float valueFor(float automatic) const;
    /// "1/3 of the automatic strength"; empty for numbers.
    std::string remark() const;

    bool operator==(const TrialStrength&) const = default;
};

/// The strengths of a trial unless the user gives others.
std::vector<TrialStrength> usualStrengths();

/// The strengths in a list such as "auto/3,auto,3auto,2000".
/// @throws UsageFailure that names --strengths
std::vector<TrialStrength> trialStrengths(const std::vector<std::string>& items);

} // namespace velorn
