#include "velimproclib/veldeblurcv/estimation/solver/normaliseEstimate.h"

#include "velimproclib/primitives/base/toFloat.h"

#include <algorithm>

namespace vel {

namespace {

/// Cuts all entries at `threshold` and lowers the others by half of it.
/// @return their sum
float cutEntries(cv::Mat& kernel, float threshold) {
    float sum = 0.0f;
    std::for_each(kernel.begin<float>(), kernel.end<float>(), [&](float& entry) {
        entry = entry < threshold ? 0.0f : toFloat(entry - 0.5 * threshold);
        sum += entry;
    });
    return sum;
}

void scaleToSumOne(cv::Mat& kernel, float sum) {
    const float scale = toFloat(1.0 / sum);
    std::for_each(kernel.begin<float>(), kernel.end<float>(),
                  [=](float& entry) { entry *= scale; });
}

} // namespace

void normaliseEstimate(cv::Mat& kernel, float floor) {
    const double peak = *std::max_element(kernel.begin<float>(), kernel.end<float>());
    const float sum = cutEntries(kernel, toFloat(floor * peak));
    scaleToSumOne(kernel, sum);
}

} // namespace vel
