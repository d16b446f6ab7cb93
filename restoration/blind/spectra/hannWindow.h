#pragma once

#include <vector>

namespace restoration {

/// The Hann window of `length` values, without the zeros at its ends; symmetric, at most 1.
std::vector<double> hannWindow(int length);

} // namespace restoration
