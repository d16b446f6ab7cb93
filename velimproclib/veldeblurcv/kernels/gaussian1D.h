#pragma once

namespace vel {

/// Normalised Gaussian taps: `size` floats, the largest in the middle, sum 1.
/// @param size odd and positive; any other size fails before the function writes anything
/// @param sigma standard deviation in taps; 0 gives NaN taps
/// @throws const char* "gaussian1D - (s2*2+1 != size)"
void gaussian1D(float* out, int size, float sigma);

/// Gaussian taps in fixed point, 4096 in the middle, for integer filters. They are not normalised:
/// `*sum` receives their sum, the divisor of the filter. Far taps may be 0; with a sigma of 0 or
/// NaN all taps and the sum are 0. The sum fits an int for sizes below 500000.
/// @throws const char* like the float form
void gaussian1D(int* out, int* sum, int size, float sigma);

} // namespace vel
