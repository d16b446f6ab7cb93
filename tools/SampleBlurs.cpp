#include "SampleBlurs.h"

#include <array>
#include <cmath>

namespace velorn::tools {
namespace {

constexpr int kSide = 13;

constexpr std::array<PathPoint, 6> kArc{{{-4.0, 3.5, 1.0},
                                         {-4.0, 0.0, 0.8},
                                         {-2.0, -3.0, 0.6},
                                         {1.5, -3.8, 0.5},
                                         {3.8, -1.5, 0.4},
                                         {3.4, 1.5, 0.3}}};

struct Place {
    double right;
    double down;
    double weight;
};

std::vector<Place> placesAlong(std::span<const PathPoint> path) {
    constexpr int kPlacesPerPixel = 16;
    std::vector<Place> places;
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        const PathPoint& from = path[i];
        const PathPoint& to = path[i + 1];
        const double length = std::hypot(to.right - from.right, to.down - from.down);
        const int count = static_cast<int>(std::ceil(kPlacesPerPixel * length));
        for (int k = 0; k < count; ++k) {
            const double t = (k + 0.5) / count;
            places.push_back({std::lerp(from.right, to.right, t), std::lerp(from.down, to.down, t),
                              std::lerp(from.stay, to.stay, t) * length / count});
        }
    }
    return places;
}

/// Distributes each place among the four weights around it. The centre of mass is the kernel's
/// centre.
BlurKernel sharedOut(const std::vector<Place>& places, int side) {
    Place sum{0.0, 0.0, 0.0};
    for (const Place& place : places) {
        sum.right += place.right * place.weight;
        sum.down += place.down * place.weight;
        sum.weight += place.weight;
    }
    BlurKernel kernel{side, side, {}};
    kernel.weights.resize(static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
    const auto add = [&](int column, int row, double weight) {
        if (column >= 0 && column < side && row >= 0 && row < side) {
            kernel.weights[static_cast<std::size_t>(row * side + column)] +=
                static_cast<float>(weight);
        }
    };
    const int middle = side / 2;
    for (const Place& place : places) {
        const double x = middle + place.right - sum.right / sum.weight;
        const double y = middle + place.down - sum.down / sum.weight;
        const int column = static_cast<int>(std::floor(x));
        const int row = static_cast<int>(std::floor(y));
        const double right = x - column;
        const double down = y - row;
        add(column, row, place.weight * (1.0 - right) * (1.0 - down));
        add(column + 1, row, place.weight * right * (1.0 - down));
        add(column, row + 1, place.weight * (1.0 - right) * down);
        add(column + 1, row + 1, place.weight * right * down);
    }
    return checkedKernel(std::move(kernel), "a sample blur");
}

} // namespace

BlurKernel pathKernel(std::span<const PathPoint> path, int side) {
    return sharedOut(placesAlong(path), side);
}

BlurKernel curvedShake() {
    return pathKernel(kArc, kSide);
}

} // namespace velorn::tools
