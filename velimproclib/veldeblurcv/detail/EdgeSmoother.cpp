#include "velimproclib/veldeblurcv/detail/EdgeSmoother.h"

#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"
#include "velimproclib/primitives/arithmetic/Vectors.h"
#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/primitives/base/TeamLoop.h"
#include "velimproclib/primitives/base/truncate.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace vel {

namespace {

constexpr double kTolerance = 1e-5;

void clampToUnit(GIMG<float>& image) {
    image.m_status =
        clampBelowInPlaceF32(image.pixels(), image.m_step, image.m_roiW, image.m_roiH, 0.0f);
    image.m_status =
        clampAboveInPlaceF32(image.pixels(), image.m_step, image.m_roiW, image.m_roiH, 1.0f);
}

/// The scale keeps the argument of the logarithm between 0.1 and 0.9.
void takeLogarithm(GIMG<float>& image) {
    image.m_status =
        mulConstInPlaceF32(0.8f, image.pixels(), image.m_step, image.m_roiW, image.m_roiH);
    image.m_status =
        addConstInPlaceF32(0.1f, image.pixels(), image.m_step, image.m_roiW, image.m_roiH);
    image.m_status = logInPlaceF32(image.pixels(), image.m_step, image.m_roiW, image.m_roiH);
}

CEdgeSmoother::Doubles allocate(std::int64_t count) {
    return hwy::AllocateAligned<double>(static_cast<std::size_t>(count));
}

} // namespace

void CEdgeSmoother::resize(std::int32_t width, std::int32_t height) {
    if (width < 1 || height < 1 || (width == m_w && height == m_h)) {
        return;
    }
    release();
    const std::int64_t n = std::int64_t{width} * height;
    constexpr std::int64_t kMost =
        std::min<std::int64_t>(std::numeric_limits<std::int32_t>::max(),
                               std::numeric_limits<std::size_t>::max() / (4 * sizeof(double)));
    if (n <= kMost) {
        m_rhs = allocate(n);
        m_solution = allocate(n);
        m_guide = allocate(n);
        m_cgWork = allocate(4 * n);
        m_rowSums = allocate(2 * std::int64_t{height});
    }
    if (!m_rhs || !m_solution || !m_guide || !m_cgWork || !m_rowSums) {
        release();
        throw kNoSmootherMemory;
    }
    m_w = width;
    m_h = height;
    m_n = static_cast<std::int32_t>(n);
    m_wx = m_cgWork.get();
    m_wy = m_wx + n;
    m_diag = m_wy + n;
}

void CEdgeSmoother::release() {
    m_rhs.reset();
    m_solution.reset();
    m_guide.reset();
    m_cgWork.reset();
    m_rowSums.reset();
    m_wx = m_wy = m_diag = nullptr;
    m_w = m_h = m_n = 0;
}

int CEdgeSmoother::smooth(GIMG<float>& rhs, GIMG<float>& io, GIMG<float>& guide, float lambda,
                          float exponent, bool logGuide, int iterations) {
    clampToUnit(rhs);
    clampToUnit(io);
    clampToUnit(guide);
    resize(rhs.m_roiW, rhs.m_roiH);
    if (iterations <= 0) {
        return 0;
    }
    if (rhs.m_roiW < 1 || rhs.m_roiH < 1) {
        return 1;
    }
    if (logGuide) {
        takeLogarithm(guide);
    }
    runInTeam([&] {
        load(rhs, io, guide);
        buildMatrix({lambda, m_eps, truncateToInt(exponent)});
        solve(iterations);
        store(io);
    });
    clampToUnit(io);
    return 1;
}

void CEdgeSmoother::load(const GIMG<float>& rhs, const GIMG<float>& io, const GIMG<float>& guide) {
    forEachPiece(m_h, [&](int row, int) {
        vecF32toF64(rhs.row(row), m_rhs.get() + at(row), m_w);
        vecF32toF64(io.row(row), m_solution.get() + at(row), m_w);
        vecF32toF64(guide.row(row), m_guide.get() + at(row), m_w);
    });
}

void CEdgeSmoother::store(GIMG<float>& io) const {
    forEachPiece(m_h,
                 [&](int row, int) { vecF64toF32(m_solution.get() + at(row), io.row(row), m_w); });
}

void CEdgeSmoother::buildMatrix(const CouplingRule& rule) {
    const auto columns = static_cast<std::size_t>(m_w);
    forEachPiece(m_h, [&](int row, int) {
        const double* guide = m_guide.get() + at(row);
        double* right = m_wx + at(row);
        couplingRow(rule, guide, guide + 1, right, columns - 1);
        right[columns - 1] = 0.0;
        double* below = m_wy + at(row);
        if (row + 1 < m_h) {
            couplingRow(rule, guide, guide + columns, below, columns);
        } else {
            std::fill_n(below, columns, 0.0);
        }
    });
    forEachPiece(m_h,
                 [&](int row, int) { diagonalRow(couplings(row), m_diag + at(row), columns); });
}

void CEdgeSmoother::solve(int iterations) {
    ResidualSums residual = startResidual();
    const double target = kTolerance * std::sqrt(residual.square);
    for (int step = 0; step < iterations && !(std::sqrt(residual.square) <= target); ++step) {
        const double length = residual.scaled / multiplyDirection();
        const ResidualSums next = reduceResidual(length);
        advance(length, next.scaled / residual.scaled);
        residual = next;
    }
}

ResidualSums CEdgeSmoother::startResidual() {
    const auto columns = static_cast<std::size_t>(m_w);
    forEachPiece(m_h, [&](int row, int) {
        double* productOfRow = product() + at(row);
        productRow(couplings(row), neighbours(m_solution, row), productOfRow, columns);
        keepSums(row, startRow(productOfRow, m_diag + at(row), m_rhs.get() + at(row),
                               m_guide.get() + at(row), columns));
    });
    return residualSums();
}

double CEdgeSmoother::multiplyDirection() {
    forEachPiece(m_h, [&](int row, int) {
        m_rowSums[static_cast<std::size_t>(row)] =
            productRow(couplings(row), neighbours(m_guide, row), product() + at(row),
                       static_cast<std::size_t>(m_w));
    });
    return sumOfRows(0);
}

ResidualSums CEdgeSmoother::reduceResidual(double length) {
    forEachPiece(m_h, [&](int row, int) {
        keepSums(row, residualRow(length, product() + at(row), m_diag + at(row),
                                  m_rhs.get() + at(row), static_cast<std::size_t>(m_w)));
    });
    return residualSums();
}

void CEdgeSmoother::advance(double length, double turn) {
    forEachPiece(m_h, [&](int row, int) {
        advanceRow(length, turn, m_rhs.get() + at(row), m_solution.get() + at(row),
                   m_guide.get() + at(row), static_cast<std::size_t>(m_w));
    });
}

std::size_t CEdgeSmoother::at(std::int32_t row) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_w);
}

CouplingRows CEdgeSmoother::couplings(std::int32_t row) const {
    // The couplings below the last row are zero; they also serve as the couplings above the first.
    const std::int32_t before = row > 0 ? row - 1 : m_h - 1;
    return {m_wx + at(row), m_wy + at(row), m_wy + at(before)};
}

NeighbourRows CEdgeSmoother::neighbours(const Doubles& plane, std::int32_t row) const {
    const double* here = plane.get() + at(row);
    return {row > 0 ? here - m_w : here, here, row + 1 < m_h ? here + m_w : here};
}

void CEdgeSmoother::keepSums(std::int32_t row, const ResidualSums& sums) {
    m_rowSums[static_cast<std::size_t>(row)] = sums.scaled;
    m_rowSums[static_cast<std::size_t>(m_h) + static_cast<std::size_t>(row)] = sums.square;
}

double CEdgeSmoother::sumOfRows(std::int32_t which) const {
    const double* rows =
        m_rowSums.get() + static_cast<std::size_t>(which) * static_cast<std::size_t>(m_h);
    double sum = 0.0;
    for (std::int32_t row = 0; row < m_h; ++row) {
        sum += rows[row];
    }
    return sum;
}

ResidualSums CEdgeSmoother::residualSums() const {
    return {sumOfRows(0), sumOfRows(1)};
}

} // namespace vel
