#pragma once

#include "velimproclib/images/Image.h"
#include "velimproclib/veldeblurcv/detail/SmootherRows.h"

#include <cstdint>
#include <hwy/aligned_allocator.h>

namespace vel {

/// Smooths a plane and preserves its edges: a weighted least squares fit in which a guide plane
/// decides where smoothing acts. The result u minimises
///
///     sum (u - b)^2 + sum ax (dx u)^2 + sum ay (dy u)^2
///
/// over pixels, horizontal pairs and vertical pairs of neighbours, with b the plane and
///
///     ax = lambda/(|dx g|^e + m_eps)      ay = lambda/(|dy g|^e + m_eps)
///
/// small across strong steps of the guide g. This is the system A u = b, where A is the identity
/// plus the weighted graph Laplacian. Conjugate gradients in double, with the diagonal of A as
/// preconditioner, take a small number of steps: the time does not depend on the picture.
///
/// The product with A needs only the two planes of couplings, therefore no sparse matrix is stored.
/// One step makes three sweeps over the rows and stores the residual r as D^-1 r, with D the
/// diagonal:
///
///     product    q = A p                              with p . q
///     residual   D^-1 r -= length*(D^-1 q)            with r . D^-1 r and r . r
///     advance    u += length*p, p = D^-1 r + turn*p
///
/// The sum of each row has the same bits on every processor variant, and the sums of the rows are
/// added in their order. Therefore the result depends neither on the variant nor on the number of
/// threads. The rows are tasks of the caller's team, or of a new one outside of a parallel region
/// (TeamLoop.h).
///
/// A workspace serves one caller at a time and keeps its arrays from call to call.
class CEdgeSmoother {
public:
    CEdgeSmoother() = default;
    CEdgeSmoother(const CEdgeSmoother&) = delete;
    CEdgeSmoother& operator=(const CEdgeSmoother&) = delete;

    /// Smooths `rhs` into `io`, which holds the start vector before the call. The three images have
    /// one size and share no pixel. All are first cut to 0..1 in place (a NaN stays a NaN); `guide`
    /// is destroyed. The result is the state after the last step, converged or not. A NaN in an
    /// image makes the whole result NaN.
    /// @param lambda weight of the smoothing
    /// @param exponent e is its integer part; the fraction has no effect
    /// @param logGuide replaces the guide by ln(0.8 guide + 0.1), which gives equal ratios equal
    /// weight
    /// @param iterations maximum number of steps; the iteration ends earlier when the norm of the
    /// residual falls to 1e-5 of its start
    /// @return 1, or 0 for `iterations` below 1: then the images are only cut
    /// @throws `kNoSmootherMemory` when memory is exhausted
    int smooth(GIMG<float>& rhs, GIMG<float>& io, GIMG<float>& guide, float lambda, float exponent,
               bool logGuide, int iterations);

    /// Reallocates the arrays for a new size. Does nothing for the present size or a side below 1.
    /// @throws `kNoSmootherMemory` when memory is exhausted or an int32 cannot count the pixels;
    /// the workspace is then empty
    void resize(std::int32_t width, std::int32_t height);

    /// Aligned to 32 bytes or more; null in an empty workspace.
    using Doubles = hwy::AlignedFreeUniquePtr<double[]>;

    double m_eps = 0.0001f;   ///< bounds the weight of pairs with equal guide values
    double m_reserved = 0.1f; ///< nothing reads it
    std::int32_t m_w = 0;     ///< size of the arrays
    std::int32_t m_h = 0;
    Doubles m_rhs;            ///< n, row-major: right-hand side, then D^-1 r
    Doubles m_solution;       ///< n: start and result
    Doubles m_guide;          ///< n: guide, then the search direction p
    std::int32_t m_n = 0;     ///< m_w*m_h
    Doubles m_cgWork;         ///< 4 n: the three planes below, followed by the product q
    double* m_wy = nullptr;   ///< into `m_cgWork`, at n: -ay, couplings with the pixel below
    double* m_wx = nullptr;   ///< into `m_cgWork`, at 0: -ax, couplings with the pixel to the right
    double* m_diag = nullptr; ///< into `m_cgWork`, at 2 n: the diagonal of A
    Doubles m_rowSums;        ///< 2 m_h: one or two sums per row

private:
    void release();
    void load(const GIMG<float>& rhs, const GIMG<float>& io, const GIMG<float>& guide);
    void store(GIMG<float>& io) const;
    void buildMatrix(const CouplingRule& rule);
    void solve(int iterations);
    ResidualSums startResidual();
    double multiplyDirection();
    ResidualSums reduceResidual(double length);
    void advance(double length, double turn);

    std::size_t at(std::int32_t row) const;
    CouplingRows couplings(std::int32_t row) const;
    NeighbourRows neighbours(const Doubles& plane, std::int32_t row) const;
    double* product() const { return m_cgWork.get() + 3 * static_cast<std::size_t>(m_n); }
    void keepSums(std::int32_t row, const ResidualSums& sums);
    double sumOfRows(std::int32_t which) const;
    ResidualSums residualSums() const;
};

} // namespace vel
