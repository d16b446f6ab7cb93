#include "restoration/kernels/kernelFromValues.h"

#include "restoration/failures/Failure.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace restoration {
namespace {

constexpr double kRounding = 1e-5;

bool areFinite(const std::vector<float>& values) {
    return std::ranges::all_of(values, [](float value) { return std::isfinite(value); });
}

} // namespace

Kernel kernelFromValues(std::vector<float> values, int width, int height) {
    if (!areFinite(values)) {
        throw Failure(VELORN_STATUS_INVALID_ARGUMENT, "the kernel has values that are not finite");
    }
    const double sum = std::accumulate(values.begin(), values.end(), 0.0);
    if (!(sum > 0.0)) {
        throw Failure(VELORN_STATUS_INVALID_ARGUMENT,
                      "the sum of the kernel's values is not positive");
    }
    if (std::abs(sum - 1.0) > kRounding) {
        for (float& value : values) {
            value = static_cast<float>(static_cast<double>(value) / sum);
        }
    }
    if (!areFinite(values)) {
        throw Failure(VELORN_STATUS_INVALID_ARGUMENT,
                      "the kernel's values are too large for their sum");
    }
    return {width, height, std::move(values)};
}

} // namespace restoration
