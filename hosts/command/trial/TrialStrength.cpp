#include "hosts/command/trial/TrialStrength.h"

#include "hosts/command/arguments/NumberRange.h"
#include "hosts/command/arguments/Numbers.h"
#include "hosts/command/terminal/Failure.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace velorn {
namespace {

constexpr NumberRange kStrengths{1.0f, 1e6f};
constexpr NumberRange kFactors{1.0f, 1000.0f};
const std::string kAutomatic = "auto";

/// `value`, above 0, rounded to two digits.
double roundedToTwoDigits(double value) {
    const double unit = std::pow(10.0, std::floor(std::log10(value)) - 1.0);
    return std::round(value / unit) * unit;
}

/// The number that `text` consists of.
float numberIn(const std::string& text) {
    const std::vector<float> numbers = numberList(text);
    if (numbers.size() != 1) {
        throw UsageFailure(
            "--strengths must be a list of numbers and of multiples of the automatic "
            "strength, such as auto/3,auto,3auto,2000");
    }
    return numbers.front();
}

float factorIn(const std::string& text) {
    const float factor = numberIn(text);
    kFactors.check("--strengths: the factor of auto", factor);
    return factor;
}

TrialStrength strengthIn(const std::string& item) {
    if (item == kAutomatic) {
        return {};
    }
    if (item.starts_with(kAutomatic + "/")) {
        return {1.0 / static_cast<double>(factorIn(item.substr(kAutomatic.size() + 1))), true};
    }
    if (item.ends_with(kAutomatic)) {
        const auto digits = item.size() - kAutomatic.size();
        return {static_cast<double>(factorIn(item.substr(0, digits))), true};
    }
    const float number = numberIn(item);
    kStrengths.check("--strengths", number);
    return {static_cast<double>(number), false};
}

} // namespace

float TrialStrength::valueFor(float automatic) const {
    const double value =
        isRelative ? roundedToTwoDigits(number * static_cast<double>(automatic)) : number;
    return std::clamp(static_cast<float>(value), kStrengths.lowest, kStrengths.highest);
}

std::string TrialStrength::remark() const {
    if (!isRelative) {
        return {};
    }
    return number < 1.0
               ? "1/" + numberText(static_cast<float>(1.0 / number)) + " of the automatic strength"
               : numberText(static_cast<float>(number)) + " times the automatic strength";
}

std::vector<TrialStrength> usualStrengths() {
    return {{1.0 / 9.0, true}, {1.0 / 3.0, true}, {1.0, true}, {3.0, true}, {9.0, true}};
}

std::vector<TrialStrength> trialStrengths(const std::vector<std::string>& items) {
    std::vector<TrialStrength> strengths;
    std::ranges::transform(items, std::back_inserter(strengths), strengthIn);
    return strengths;
}

} // namespace velorn
