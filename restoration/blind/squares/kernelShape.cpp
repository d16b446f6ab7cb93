#include "restoration/blind/squares/kernelShape.h"

#include "restoration/blind/squares/Spread.h"

#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace restoration {
namespace {

constexpr double kStartingSigma = 0.8;
constexpr double kLightestPiece = 0.1;

/// The 8-connected pieces of the places above 0.
class Pieces {
public:
    explicit Pieces(const SquareKernel& kernel)
        : m_side(kernel.side), m_labels(kernel.values.size(), kNone) {
        for (std::size_t start = 0; start < m_labels.size(); ++start) {
            if (kernel.values[start] > 0.0 && m_labels[start] == kNone) {
                fill(kernel, start);
            }
        }
    }

    bool isLight(std::size_t place) const {
        return m_labels[place] != kNone &&
               m_masses[m_labels[place]] <
                   kLightestPiece * *std::max_element(m_masses.begin(), m_masses.end());
    }

private:
    static constexpr auto kNone = static_cast<std::size_t>(-1);

    void fill(const SquareKernel& kernel, std::size_t start) {
        const std::size_t label = m_masses.size();
        m_masses.push_back(0.0);
        std::vector<std::size_t> open{start};
        m_labels[start] = label;
        while (!open.empty()) {
            const std::size_t place = open.back();
            open.pop_back();
            m_masses[label] += kernel.values[place];
            const int row = static_cast<int>(place) / m_side;
            const int column = static_cast<int>(place) % m_side;
            for (int y = std::max(row - 1, 0); y <= std::min(row + 1, m_side - 1); ++y) {
                for (int x = std::max(column - 1, 0); x <= std::min(column + 1, m_side - 1); ++x) {
                    const auto next = static_cast<std::size_t>(y * m_side + x);
                    if (kernel.values[next] > 0.0 && m_labels[next] == kNone) {
                        m_labels[next] = label;
                        open.push_back(next);
                    }
                }
            }
        }
    }

    int m_side;
    std::vector<std::size_t> m_labels;
    std::vector<double> m_masses;
};

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

void scaleToUnitSum(SquareKernel& kernel) {
    double sum = 0.0;
    for (const double value : kernel.values) {
        sum += value;
    }
    for (double& value : kernel.values) {
        value /= sum;
    }
}

SquareKernel startingKernel(int side) {
    SquareKernel kernel(side);
    const int radius = kernel.radius();
    for (int y = -radius; y <= radius; ++y) {
        for (int x = -radius; x <= radius; ++x) {
            kernel.at(y + radius, x + radius) =
                std::exp(-(x * x + y * y) / (2.0 * kStartingSigma * kStartingSigma));
        }
    }
    scaleToUnitSum(kernel);
    return kernel;
}

void removeSpecks(double threshold, SquareKernel& kernel) {
    const double bound = threshold * kernel.largest();
    for (double& value : kernel.values) {
        value = value < bound ? 0.0 : value;
    }
    const Pieces pieces(kernel);
    for (std::size_t place = 0; place < kernel.values.size(); ++place) {
        if (pieces.isLight(place)) {
            kernel.values[place] = 0.0;
        }
    }
    scaleToUnitSum(kernel);
}

void recentre(SquareKernel& kernel) {
    const int radius = kernel.radius();
    double right = 0.0;
    double down = 0.0;
    for (int y = 0; y < kernel.side; ++y) {
        for (int x = 0; x < kernel.side; ++x) {
            right += (x - radius) * kernel.at(y, x);
            down += (y - radius) * kernel.at(y, x);
        }
    }
    const int moveX = static_cast<int>(std::floor(right + 0.5));
    const int moveY = static_cast<int>(std::floor(down + 0.5));
    SquareKernel moved(kernel.side);
    for (int y = std::max(0, -moveY); y < std::min(kernel.side, kernel.side - moveY); ++y) {
        for (int x = std::max(0, -moveX); x < std::min(kernel.side, kernel.side - moveX); ++x) {
            moved.at(y, x) = kernel.at(y + moveY, x + moveX);
        }
    }
    scaleToUnitSum(moved);
    kernel = std::move(moved);
}

SquareKernel resampled(const SquareKernel& kernel, int side, double pitch) {
    SquareKernel result(side);
    const auto valueAt = [&](int row, int column) {
        const bool isInside = row >= 0 && column >= 0 && row < kernel.side && column < kernel.side;
        return isInside ? kernel.at(row, column) : 0.0;
    };
    const auto place = [&](int index) { return kernel.radius() + pitch * (index - side / 2); };
    for (int y = 0; y < side; ++y) {
        const double row = place(y);
        const int top = static_cast<int>(std::floor(row));
        const double down = row - top;
        for (int x = 0; x < side; ++x) {
            const double column = place(x);
            const int left = static_cast<int>(std::floor(column));
            const double right = column - left;
            result.at(y, x) =
                (1.0 - down) *
                    ((1.0 - right) * valueAt(top, left) + right * valueAt(top, left + 1)) +
                down *
                    ((1.0 - right) * valueAt(top + 1, left) + right * valueAt(top + 1, left + 1));
        }
    }
    scaleToUnitSum(result);
    return result;
}

int extentOf(const SquareKernel& kernel) {
    const int radius = kernel.radius();
    int reach = 0;
    for (int y = 0; y < kernel.side; ++y) {
        for (int x = 0; x < kernel.side; ++x) {
            if (kernel.at(y, x) > 0.0) {
                reach = std::max({reach, std::abs(y - radius), std::abs(x - radius)});
            }
        }
    }
    return 2 * reach + 1;
}

SquareKernel withSide(const SquareKernel& kernel, int side) {
    SquareKernel result(side);
    const int shift = side / 2 - kernel.radius();
    for (int y = std::max(0, shift); y < std::min(side, kernel.side + shift); ++y) {
        for (int x = std::max(0, shift); x < std::min(side, kernel.side + shift); ++x) {
            result.at(y, x) = kernel.at(y - shift, x - shift);
        }
    }
    scaleToUnitSum(result);
    return result;
}

double raggednessOf(const SquareKernel& kernel) {
    const Spread spread(kernel);
    double entropy = 0.0;
    for (const double weight : kernel.values) {
        entropy -= weight > 0.0 ? weight * std::log(weight) : 0.0;
    }
    constexpr double kLeast = 0.05;
    return entropy - 0.5 * (std::log(spread.largest() + kLeast) +
                            std::log(std::max(spread.smallest(), 0.0) + kLeast));
}

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
