#include "hosts/command/arguments/NumberRange.h"

#include "hosts/command/arguments/Numbers.h"
#include "hosts/command/terminal/Failure.h"

namespace velorn {

std::string NumberRange::text() const {
    return numberText(lowest) + ".." + numberText(highest);
}

void NumberRange::check(const std::string& name, float value, const std::string& unit) const {
    // Written so that NaN fails the test.
    if (!(value >= lowest && value <= highest)) {
        throw UsageFailure(name + " must be from " + numberText(lowest) + " to " +
                           numberText(highest) + unit);
    }
}

} // namespace velorn
