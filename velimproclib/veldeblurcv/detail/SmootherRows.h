#pragma once

#include <cstddef>
#include <cstdint>

/// The row operations of the edge-preserving smoother, in double.
///
/// The smoother's matrix is A = I + L with L the weighted graph Laplacian of the pixel grid. Its
/// off-diagonal elements, all 0 or below, are what this file calls couplings; D is the diagonal of
/// A. A residual r is kept as D^-1 r, which is all that the preconditioned iteration asks for.
///
/// Sums go column by column into eight lanes, column c into lane c mod 8, and the lanes are then
/// added in pairs: the results have the same bits on every processor variant. Rows have any
/// alignment and at least one column; target rows lie apart from all others. Nothing is allocated
/// or thrown, and different rows can be worked on by different threads.
namespace vel {

/// How the coupling of two neighbours follows from their guide values.
struct CouplingRule {
    double lambda;         ///< weight of the smoothing
    double epsilon;        ///< keeps the coupling of equal guide values finite
    std::int32_t exponent; ///< of the guide's step; any integer
};

/// coupling[c] = -lambda/(|b[c] - a[c]|^exponent + epsilon), the power by repeated squaring and,
/// for negative exponents, as 1 over the power of |exponent|; exponent 0 gives the power 1 for
/// every step. `a` and `b` may overlap.
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

/// A row of a vector between its neighbours. Where there is no neighbour, `here` stands in.
struct NeighbourRows {
    const double* above;
    const double* here;
    const double* below;
};

/// One row of A v into `product`. The terms of L are taken as coupling*(neighbour - v): they vanish
/// exactly where v is constant.
/// @return the row's part of v . A v
double productRow(const CouplingRows& coupling, const NeighbourRows& v, double* product,
                  std::size_t count) noexcept;

/// A row's parts of two sums over the residual r.
struct ResidualSums {
    double scaled; ///< r . D^-1 r
    double square; ///< r . r
};

/// Turns the right-hand side b into the residual of the start vector, D^-1 (b - product), and
/// copies it to `direction`.
ResidualSums startRow(const double* product, const double* diagonal, double* residual,
                      double* direction, std::size_t count) noexcept;

/// residual -= length*(D^-1 product)
ResidualSums residualRow(double length, const double* product, const double* diagonal,
                         double* residual, std::size_t count) noexcept;

/// solution += length*direction, then direction = residual + turn*direction
void advanceRow(double length, double turn, const double* residual, double* solution,
                double* direction, std::size_t count) noexcept;

} // namespace vel
