#include "KernelLikeness.h"

#include "hosts/command/kernels/BlurKernel.h"

#include <algorithm>
#include <cmath>

namespace velorn::tools {
namespace {

/// The sum of products after moving `second` by (right, down) relative to `first`.
double overlap(const BlurKernel& first, const BlurKernel& second, int right, int down) {
    double sum = 0.0;
    for (int r = std::max(0, down); r < std::min(first.height, second.height + down); ++r) {
        for (int c = std::max(0, right); c < std::min(first.width, second.width + right); ++c) {
            sum += static_cast<double>(first.at(r, c)) *
                   static_cast<double>(second.at(r - down, c - right));
        }
    }
    return sum;
}

} // namespace

double likeness(const BlurKernel& first, const BlurKernel& second) {
    double best = 0.0;
    for (int down = 1 - second.height; down < first.height; ++down) {
        for (int right = 1 - second.width; right < first.width; ++right) {
            best = std::max(best, overlap(first, second, right, down));
        }
    }
    return best / std::sqrt(overlap(first, first, 0, 0) * overlap(second, second, 0, 0));
}

} // namespace velorn::tools
