#include "hosts/command/restoration/DefaultStrength.h"

#include <algorithm>

namespace velorn {

float defaultStrength(double noiseLevel) {
    constexpr double kAtOneLevel = 30000.0;
    constexpr double kWeakest = 500.0;
    constexpr double kStrongest = 50000.0;
    const double strength = kAtOneLevel / (noiseLevel * noiseLevel);
    return static_cast<float>(std::clamp(strength, kWeakest, kStrongest));
}

} // namespace velorn
