#include "restoration/blind/refine/minimise.h"

#include <cmath>
#include <gtest/gtest.h>

namespace restoration {
namespace {

/// The valley of Rosenbrock: its minimum is 0 at (1, 1).
double valley(const std::vector<double>& place, std::vector<double>& gradient) {
    const double across = place[1] - place[0] * place[0];
    const double along = 1.0 - place[0];
    gradient = {-400.0 * place[0] * across - 2.0 * along, 200.0 * across};
    return 100.0 * across * across + along * along;
}

TEST(Minimise, FindsTheEndOfACurvedValley) {
    std::vector<double> place{-1.2, 1.0};
    minimise(valley, 100, place);
    EXPECT_NEAR(place[0], 1.0, 1e-6);
    EXPECT_NEAR(place[1], 1.0, 1e-6);
}

TEST(Minimise, NeverMovesUphill) {
    std::vector<double> gradient(2);
    double last = valley({-1.2, 1.0}, gradient);
    for (int steps = 1; steps < 20; ++steps) {
        std::vector<double> place{-1.2, 1.0};
        minimise(valley, steps, place);
        const double value = valley(place, gradient);
        EXPECT_LE(value, last);
        last = value;
    }
}

TEST(Minimise, StaysWhereTheGradientIsZeroOrNotANumber) {
    for (const double slope : {0.0, std::nan("")}) {
        std::vector<double> place{2.0, 3.0};
        minimise(
            [&](const std::vector<double>&, std::vector<double>& gradient) {
                gradient = {slope, slope};
                return 1.0;
            },
            5, place);
        EXPECT_EQ(place, (std::vector{2.0, 3.0}));
    }
}

} // namespace
} // namespace restoration
