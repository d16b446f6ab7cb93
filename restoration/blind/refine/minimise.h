#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace restoration {

/// A smooth function of many variables: returns the value at `place` and writes the gradient, which
/// has the size of `place`.
using SmoothFunction =
    std::function<double(const std::vector<double>& place, std::vector<double>& gradient)>;

/// Moves `place` towards a minimum by at most `steps` steps of the limited-memory quasi-Newton
/// method (Nocedal, Mathematics of Computation 35, 1980), each along a line to a sufficient
/// decrease. Ends early where no decrease is found. The first step changes `place` by about 5 %.
void minimise(const SmoothFunction& function, int steps, std::vector<double>& place);

} // namespace restoration
