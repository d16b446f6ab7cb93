#include "velimproclib/veldeblurcv/kernels/gaussian1D.h"

#include "velimproclib/primitives/base/toFloat.h"
#include "velimproclib/primitives/base/truncate.h"

#include <cmath>

namespace vel {

namespace {

/// Half of `size`, which must be odd and positive.
int checkedHalf(int size) {
    const int half = size / 2;
    if (half * 2 + 1 != size) {
        throw "gaussian1D - (s2*2+1 != size)";
    }
    return half;
}

double gaussian(int i, double sigma) {
    return std::exp(i * (-0.5 * i) / (sigma * sigma));
}

} // namespace

void gaussian1D(float* out, int size, float sigma) {
    const int half = checkedHalf(size);
    double sum = 0.0;
    for (int i = -half; i <= half; ++i) {
        const float tap = toFloat(gaussian(i, sigma));
        out[i + half] = tap;
        sum += tap;
    }
    const float divisor = toFloat(sum);
    for (int i = 0; i < size; ++i) {
        out[i] /= divisor;
    }
}

void gaussian1D(int* out, int* sum, int size, float sigma) {
    const int half = checkedHalf(size);
    *sum = 0;
    for (int i = -half; i <= half; ++i) {
        const int tap = truncateToInt(gaussian(i, sigma) * 4096.0 + 0.49);
        out[i + half] = tap;
        *sum += tap;
    }
}

} // namespace vel
