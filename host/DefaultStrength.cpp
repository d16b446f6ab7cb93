#include "DefaultStrength.h"

#include <algorithm>
#include <cmath>

namespace velorn {

float defaultStrength(double noiseLevel) {
    constexpr double kAtOneLevel = 30000.0;
    constexpr double kExponent = -1.465;
    constexpr double kWeakest = 500.0;
    constexpr double kStrongest = 50000.0;
    const double strength = kAtOneLevel * std::pow(std::max(noiseLevel, 0.1), kExponent);
    return static_cast<float>(std::clamp(strength, kWeakest, kStrongest));
}

} // namespace velorn
