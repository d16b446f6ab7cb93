#include "restoration/blind/spectra/hannWindow.h"

#include <cmath>
#include <numbers>

namespace restoration {

std::vector<double> hannWindow(int length) {
    std::vector<double> values;
    for (int i = 1; i <= length; ++i) {
        values.push_back(0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * i / (length + 1)));
    }
    return values;
}

} // namespace restoration
