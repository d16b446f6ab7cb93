#include "drawnPictures.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace restoration {
namespace {

class RandomNumbers {
public:
    explicit RandomNumbers(std::uint32_t seed) : m_state(seed) {}

    int below(int limit) {
        m_state = m_state * 1664525U + 1013904223U;
        return static_cast<int>((m_state >> 8) % static_cast<std::uint32_t>(limit));
    }

private:
    std::uint32_t m_state;
};

/// Whether a shape covers the place (right, down) from its centre.
struct Shape {
    int kind = 0;
    int size = 0;
    int p = 0;
    int q = 0;

    bool covers(int right, int down) const {
        if (kind == 0) {
            return std::abs(right) <= size && std::abs(down) <= size / 2;
        }
        const int squares = right * right + down * down;
        if (kind == 1) {
            return squares <= size * size;
        }
        return std::abs(p * right + q * down) <= 2 * size &&
               std::abs(q * right - p * down) <= 8 * size && squares <= 9 * size * size;
    }
};

} // namespace

std::int64_t WholeKernel::sum() const {
    return std::accumulate(weights.begin(), weights.end(), std::int64_t{0});
}

SquareKernel WholeKernel::scaled() const {
    SquareKernel kernel(side);
    std::ranges::transform(weights, kernel.values.begin(), [&](std::int64_t weight) {
        return static_cast<double>(weight) / static_cast<double>(sum());
    });
    return kernel;
}

WholeKernel discOfRadius3() {
    WholeKernel kernel(9);
    for (int row = 0; row < 9; ++row) {
        for (int column = 0; column < 9; ++column) {
            for (int sample = 0; sample < 64; ++sample) {
                const int down = 16 * (row - 4) + 2 * (sample / 8) - 7;
                const int right = 16 * (column - 4) + 2 * (sample % 8) - 7;
                kernel.at(row, column) += right * right + down * down <= 48 * 48 ? 1 : 0;
            }
        }
    }
    return kernel;
}

WholeKernel pathKernel(int side, const std::vector<PathStop>& stops) {
    constexpr int kSteps = 48;
    constexpr int kParts = 16; // of a pixel
    const auto floorOfParts = [](int place) {
        return place >= 0 ? place / kSteps : -((-place + kSteps - 1) / kSteps);
    };
    WholeKernel kernel(side);
    for (std::size_t i = 0; i + 1 < stops.size(); ++i) {
        const PathStop& from = stops[i];
        const PathStop& to = stops[i + 1];
        for (int t = 0; t < kSteps; ++t) {
            const auto place = [&](int first, int last) {
                return floorOfParts((first * (kSteps - t) + last * t) * kParts) +
                       kParts * (side / 2);
            };
            const int right = place(from.right, to.right);
            const int down = place(from.down, to.down);
            const int weight = from.weight * (kSteps - t) + to.weight * t;
            const int column = right / kParts;
            const int row = down / kParts;
            const int x = right % kParts;
            const int y = down % kParts;
            kernel.at(row, column) += weight * (kParts - x) * (kParts - y);
            kernel.at(row, column + 1) += weight * x * (kParts - y);
            kernel.at(row + 1, column) += weight * (kParts - x) * y;
            kernel.at(row + 1, column + 1) += weight * x * y;
        }
    }
    return kernel;
}

WholeKernel line11() {
    return pathKernel(15, {{-5, 2, 1}, {5, -2, 1}});
}

WholeKernel hook() {
    return pathKernel(15, {{-3, -4, 6}, {-3, 3, 5}, {-1, 5, 4}, {4, 5, 3}});
}

DrawnScene::DrawnScene(int width, int height, std::uint32_t seed)
    : m_width(width), m_height(height),
      m_levels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 128) {
    constexpr int kShapes = 90;
    RandomNumbers random(seed);
    for (int i = 0; i < kShapes; ++i) {
        Shape shape;
        shape.kind = random.below(3);
        const int x = random.below(width);
        const int y = random.below(height);
        shape.size = 6 + random.below(std::max(width / 5 - i * width / 5 / kShapes, 8));
        const int level = random.below(256);
        if (shape.kind == 2) {
            shape.p = random.below(9) - 4;
            shape.q = random.below(9) - 4;
        }
        for (int row = 0; row < height; ++row) {
            for (int column = 0; column < width; ++column) {
                if (shape.covers(column - x, row - y)) {
                    m_levels[static_cast<std::size_t>(row * width + column)] = level;
                }
            }
        }
    }
}

Plane DrawnScene::plane() const {
    Plane plane(m_width, m_height);
    std::ranges::transform(m_levels, plane.values().begin(),
                           [](std::int64_t level) { return static_cast<float>(level) / 255.0f; });
    return plane;
}

Plane blurredPicture(const DrawnScene& scene, const WholeKernel& kernel, std::uint32_t noise,
                     std::uint32_t seed) {
    const int last = kernel.side - 1;
    Plane picture(scene.width() - last, scene.height() - last);
    const std::int64_t whole = kernel.sum();
    RandomNumbers random(seed);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            std::int64_t sum = 0;
            for (int row = 0; row < kernel.side; ++row) {
                for (int column = 0; column < kernel.side; ++column) {
                    sum += kernel.weights[static_cast<std::size_t>(row * kernel.side + column)] *
                           scene.at(y + last - row, x + last - column);
                }
            }
            std::int64_t level = (2 * sum + whole) / (2 * whole);
            if (noise > 0) {
                level += random.below(2 * static_cast<int>(noise) + 1) - static_cast<int>(noise);
            }
            picture.row(y)[x] =
                static_cast<float>(std::clamp<std::int64_t>(level, 0, 255)) / 255.0f;
        }
    }
    return picture;
}

} // namespace restoration
