#include "restoration/blind/squares/likeness.h"

#include "restoration/blind/squares/kernelSides.h"

#include <algorithm>
#include <cmath>

namespace restoration {
namespace {

double likenessWithin(const SquareKernel& first, const SquareKernel& second, int reach) {
    const int side = std::max(extentOf(first), extentOf(second));
    const SquareKernel a = withSide(first, side);
    const SquareKernel b = withSide(second, side);
    double best = 0.0;
    for (int down = -reach; down <= reach; ++down) {
        for (int right = -reach; right <= reach; ++right) {
            best = std::max(best, sumOfProducts(a, b, right, down));
        }
    }
    return best / std::sqrt(sumOfProducts(a, a, 0, 0) * sumOfProducts(b, b, 0, 0));
}

} // namespace

double sumOfProducts(const SquareKernel& first, const SquareKernel& second, int right, int down) {
    double sum = 0.0;
    for (int y = std::max(0, down); y < std::min(first.side, second.side + down); ++y) {
        for (int x = std::max(0, right); x < std::min(first.side, second.side + right); ++x) {
            sum += first.at(y, x) * second.at(y - down, x - right);
        }
    }
    return sum;
}

double likeness(const SquareKernel& first, const SquareKernel& second) {
    // Both are centred, therefore shifts are small even where one lacks an arm.
    return likenessWithin(first, second, std::max(extentOf(first), extentOf(second)) / 3 + 1);
}

double likenessNearby(const SquareKernel& first, const SquareKernel& second) {
    return likenessWithin(first, second, 1);
}

} // namespace restoration
