#pragma once

namespace vel {

/// Normalised Gaussian taps: `size` floats around the middle, sum 1.
/// @param size odd; an even or non-positive size fails before anything is written
/// @param sigma standard deviation in taps; 0 gives not-a-number taps
/// @throws const char* "gaussian1D - (s2*2+1 != size)"
void gaussian1D(float* out, int size, float sigma);

/// Gaussian taps in fixed point, 4096 at the middle, for integer filters. They are not normalised:
/// `*sum` receives what to divide by. Far taps may be zero; with a sigma of 0 or NaN all of them
/// and the sum are. The sum fits an int for any size below 500000.
/// @throws const char* as the float form does
void gaussian1D(int* out, int* sum, int size, float sigma);

} // namespace vel
