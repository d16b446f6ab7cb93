#include "restoration/finishing/EdgeAwareSmoother.h"

#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace restoration {
namespace {

constexpr float kLambda = 0.05f;
constexpr float kEpsilon = 0.0001f;
constexpr int kSteps = 20;
/// The eigenvalues that the iteration damps evenly. The preconditioned matrix has none above 2.
/// Content of lower eigenvalues is so smooth that the start, the plane itself, is right.
constexpr double kLowest = 0.01;
constexpr double kHighest = 2.0;

/// The scale keeps the argument of the logarithm between 0.1 and 0.9.
void takeLogarithm(Plane& plane) {
    const auto step = static_cast<std::int32_t>(sizeof(float)) * plane.width();
    for (float& value : plane.values()) {
        value = 0.8f * value + 0.1f;
    }
    vel::logInPlaceF32(plane.row(0), step, plane.width(), plane.height());
}

} // namespace

void EdgeAwareSmoother::smooth(Plane& plane, const Cancellation& cancellation) {
    constexpr double kCentre = (kHighest + kLowest) / 2;
    constexpr double kRadius = (kHighest - kLowest) / 2;
    fit(plane);
    couple(plane);
    double rho = kRadius / kCentre;
    start(plane, static_cast<float>(1 / kCentre));
    for (int i = 0; i < kSteps; ++i) {
        cancellation.check();
        const double next = 1 / (2 * kCentre / kRadius - rho);
        step(plane, {static_cast<float>(next * rho), static_cast<float>(2 * next / kRadius)});
        rho = next;
    }
}

void EdgeAwareSmoother::fit(const Plane& plane) {
    if (m_guide.width() == plane.width() && m_guide.height() == plane.height()) {
        return;
    }
    for (Plane* scratch : {&m_guide, &m_right, &m_below, &m_inverse, &m_residual, &m_direction}) {
        *scratch = Plane(plane.width(), plane.height());
    }
    m_zeros.assign(static_cast<std::size_t>(plane.width()), 0.0f);
}

void EdgeAwareSmoother::couple(const Plane& plane) {
    std::ranges::copy(plane.values(), m_guide.values().begin());
    takeLogarithm(m_guide);
    const auto columns = static_cast<std::size_t>(plane.width());
    for (int row = 0; row < plane.height(); ++row) {
        const float* guide = m_guide.row(row);
        couplingRow(kLambda, kEpsilon, guide, guide + 1, m_right.row(row), columns - 1);
        m_right.row(row)[columns - 1] = 0.0f;
        if (row + 1 < plane.height()) {
            couplingRow(kLambda, kEpsilon, guide, guide + columns, m_below.row(row), columns);
        } else {
            std::ranges::copy(m_zeros, m_below.row(row));
        }
    }
    for (int row = 0; row < plane.height(); ++row) {
        inverseDiagonalRow(couplings(row), m_inverse.row(row), columns);
    }
}

/// The residual of the plane itself and the first direction.
void EdgeAwareSmoother::start(const Plane& plane, float firstFactor) {
    const auto columns = static_cast<std::size_t>(plane.width());
    for (int row = 0; row < plane.height(); ++row) {
        float* residual = m_residual.row(row);
        startResidualRow(couplings(row), m_inverse.row(row), threeRows(plane, row), residual,
                         columns);
        std::transform(residual, residual + columns, m_direction.row(row),
                       [=](float value) { return firstFactor * value; });
    }
}

void EdgeAwareSmoother::step(Plane& plane, const StepFactors& factors) {
    for (int row = 0; row < plane.height(); ++row) {
        stepRow(couplings(row), m_inverse.row(row), threeRows(m_direction, row), factors,
                plane.row(row), m_residual.row(row), m_guide.row(row),
                static_cast<std::size_t>(plane.width()));
    }
    std::swap(m_direction, m_guide);
}

Couplings EdgeAwareSmoother::couplings(int row) const noexcept {
    return {m_right.row(row), row > 0 ? m_below.row(row - 1) : m_zeros.data(), m_below.row(row)};
}

ThreeRows EdgeAwareSmoother::threeRows(const Plane& plane, int row) const noexcept {
    const float* here = plane.row(row);
    return {row > 0 ? plane.row(row - 1) : here, here,
            row + 1 < plane.height() ? plane.row(row + 1) : here};
}

} // namespace restoration
