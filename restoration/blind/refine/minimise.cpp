#include "restoration/blind/refine/minimise.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <utility>

namespace restoration {
namespace {

constexpr std::size_t kMemory = 10;
constexpr int kMostTrials = 8;
/// Factor of the step length from trial to trial.
constexpr double kShorter = 0.4;
/// Share of the decrease that the slope promises (Armijo's condition).
constexpr double kSufficient = 1e-4;
constexpr double kFirstStep = 0.05;

using Vector = std::vector<double>;

double innerProduct(const Vector& a, const Vector& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

/// target += factor * added
void add(const Vector& added, double factor, Vector& target) {
    for (std::size_t i = 0; i < target.size(); ++i) {
        target[i] += factor * added[i];
    }
}

Vector difference(const Vector& a, const Vector& b) {
    Vector result = a;
    add(b, -1.0, result);
    return result;
}

/// A step taken, the change of the gradient along it, and their inner product.
struct Move {
    Vector step;
    Vector change;
    double curvature = 0.0;
};

/// The inverse Hessian matrix that the last moves show, times the gradient.
class InverseHessian {
public:
    void remember(Move move) {
        if (!(move.curvature > 0.0)) {
            return;
        }
        m_moves.push_back(std::move(move));
        if (m_moves.size() > kMemory) {
            m_moves.pop_front();
        }
    }

    /// @param firstScale of the identity matrix while no move is known
    Vector times(const Vector& gradient, double firstScale) const {
        Vector direction = gradient;
        Vector weights(m_moves.size());
        for (std::size_t m = m_moves.size(); m-- > 0;) {
            weights[m] = innerProduct(m_moves[m].step, direction) / m_moves[m].curvature;
            add(m_moves[m].change, -weights[m], direction);
        }
        const double scale = m_moves.empty() ? firstScale : scaleOf(m_moves.back());
        for (double& value : direction) {
            value *= scale;
        }
        for (std::size_t m = 0; m < m_moves.size(); ++m) {
            const double weight = innerProduct(m_moves[m].change, direction) / m_moves[m].curvature;
            add(m_moves[m].step, weights[m] - weight, direction);
        }
        return direction;
    }

private:
    static double scaleOf(const Move& move) {
        return move.curvature / innerProduct(move.change, move.change);
    }

    std::deque<Move> m_moves;
};

/// A place, and the function there.
struct Point {
    Vector place;
    Vector gradient;
    double value = 0.0;

    Point(const SmoothFunction& function, Vector at)
        : place(std::move(at)), gradient(place.size()), value(function(place, gradient)) {}
};

/// The first place along `direction` that is low enough, if any; `slope` is above 0.
bool descend(const SmoothFunction& function, const Vector& direction, double slope, Point& point,
             InverseHessian& inverse) {
    double length = 1.0;
    for (int trial = 0; trial < kMostTrials; ++trial, length *= kShorter) {
        Vector place = point.place;
        add(direction, -length, place);
        Point next(function, std::move(place));
        if (next.value <= point.value - kSufficient * length * slope) {
            Move move{difference(next.place, point.place),
                      difference(next.gradient, point.gradient)};
            move.curvature = innerProduct(move.step, move.change);
            inverse.remember(std::move(move));
            point = std::move(next);
            return true;
        }
    }
    return false;
}

} // namespace

void minimise(const SmoothFunction& function, int steps, std::vector<double>& place) {
    Point point(function, place);
    InverseHessian inverse;
    for (int step = 0; step < steps; ++step) {
        const double steepness = innerProduct(point.gradient, point.gradient);
        const double firstScale =
            kFirstStep * std::sqrt(innerProduct(point.place, point.place) / steepness);
        const Vector direction = inverse.times(point.gradient, firstScale);
        const double slope = innerProduct(direction, point.gradient);
        // Also where the gradient is 0 or not a number.
        if (!(slope > 0.0) || !descend(function, direction, slope, point, inverse)) {
            break;
        }
    }
    place = std::move(point.place);
}

} // namespace restoration
