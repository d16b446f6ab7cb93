#pragma once

#include <cstddef>
#include <cstdint>

/// The row operations of the edge-preserving smoother, in double.
///
/// The smoother's matrix is A = I + L, with L the weighted graph Laplacian of the pixel grid. This
/// file calls its off-diagonal elements, all 0 or negative, couplings; D is the diagonal of A. A
/// residual r is stored as D^-1 r, the only form that the preconditioned iteration needs.
///
/// Sums add column c to lane c mod 8 of eight lanes, then add the lanes in pairs: the results have
/// the same bits on every processor variant. Rows have any alignment and at least one column;
/// target rows overlap no other row. Nothing allocates or throws, and different threads may work on
/// different rows.
namespace vel {

/// The coupling of two neighbours as a function of their guide values.
struct CouplingRule {
    double lambda;         ///< weight of the smoothing
    double epsilon;        ///< bounds the coupling of equal guide values
    std::int32_t exponent; ///< of the guide's step; any integer
};

/// coupling[c] = -lambda/(|b[c] - a[c]|^exponent + epsilon). The power is computed by repeated
/// squaring; for a negative exponent it is 1 over the power of |exponent|, for exponent 0 it is 1.
/// `a` and `b` may overlap.
void couplingRow(const CouplingRule& rule, const double* a, const double* b, double* coupling,
                 std::size_t count) noexcept;

/// The couplings of a row of pixels.
struct CouplingRows {
    const double* right; ///< with the pixel to the right; the last element is 0
    const double* below; ///< with the pixel below; 0 throughout in the last row
    const double* above; ///< with the pixel above: `below` of the row before, or zeros
};

/// diagonal[c] = 1 - right[c] - below[c] - right[c - 1] - above[c], from left to right.
void diagonalRow(const CouplingRows& coupling, double* diagonal, std::size_t count) noexcept;

/// A row of a vector and its neighbours. `here` replaces a neighbour that does not exist.
struct NeighbourRows {
    const double* above;
    const double* here;
    const double* below;
};

/// Writes one row of A v to `product`. The terms of L have the form coupling*(neighbour - v): they
/// are exactly 0 where v is constant.
/// @return the row's part of v . A v
double productRow(const CouplingRows& coupling, const NeighbourRows& v, double* product,
                  std::size_t count) noexcept;

/// A row's parts of two sums over the residual r.
struct ResidualSums {
    double scaled; ///< r . D^-1 r
    double square; ///< r . r
};

/// Replaces the right-hand side b in `residual` by the residual of the start vector,
/// D^-1 (b - product), and copies it to `direction`.
ResidualSums startRow(const double* product, const double* diagonal, double* residual,
                      double* direction, std::size_t count) noexcept;

/// residual -= length*(D^-1 product)
ResidualSums residualRow(double length, const double* product, const double* diagonal,
                         double* residual, std::size_t count) noexcept;

/// solution += length*direction, then direction = residual + turn*direction
void advanceRow(double length, double turn, const double* residual, double* solution,
                double* direction, std::size_t count) noexcept;

} // namespace vel
