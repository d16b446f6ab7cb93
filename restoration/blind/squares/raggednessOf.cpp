#include "restoration/blind/squares/raggednessOf.h"

#include "restoration/blind/squares/Spread.h"

#include <algorithm>
#include <cmath>

namespace restoration {

double raggednessOf(const SquareKernel& kernel) {
    const Spread spread(kernel);
    double entropy = 0.0;
    for (const double weight : kernel.values) {
        entropy -= weight > 0.0 ? weight * std::log(weight) : 0.0;
    }
    constexpr double kLeast = 0.05;
    return entropy - 0.5 * (std::log(spread.largest() + kLeast) +
                            std::log(std::max(spread.smallest(), 0.0) + kLeast));
}

} // namespace restoration
