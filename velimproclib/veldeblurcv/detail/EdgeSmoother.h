#pragma once

#include "velimproclib/images/Image.h"
#include "velimproclib/veldeblurcv/detail/SmootherRows.h"

#include <cstdint>
#include <hwy/aligned_allocator.h>

namespace vel {

/// Smooths a plane but for its edges: a weighted least squares fit in which a guide plane decides
/// where smoothing may act. The result u minimises
///
///     sum (u - b)^2 + sum ax (dx u)^2 + sum ay (dy u)^2
///
/// over pixels, horizontal and vertical pairs of neighbours, with b the plane and
///
///     ax = lambda/(|dx g|^e + m_eps)      ay = lambda/(|dy g|^e + m_eps)
///
/// small across strong steps of the guide g. That is the system A u = b with A the identity plus
/// the weighted graph Laplacian, solved in double by conjugate gradients with the diagonal of A as
/// preconditioner, for a few steps only: the time is bounded whatever the picture holds.
///
/// The product with A needs the two planes of couplings and nothing else, so no sparse matrix is
/// stored. One step is three sweeps over the rows, and the residual r is kept as D^-1 r, with D the
/// diagonal:
///
///     product    q = A p                              with p . q
///     residual   D^-1 r -= length*(D^-1 q)            with r . D^-1 r and r . r
///     advance    u += length*p, p = D^-1 r + turn*p
///
/// The sums of the rows are added in their order, so that the result does not depend on the number
/// of threads, nor, as the rows' own sums do not, on the processor variant. The rows are tasks of
/// the caller's team, or of a new one outside of a parallel region (TeamLoop.h).
///
/// A workspace serves one caller at a time and keeps its arrays from call to call.
class CEdgeSmoother {
public:
    CEdgeSmoother() = default;
    CEdgeSmoother(const CEdgeSmoother&) = delete;
    CEdgeSmoother& operator=(const CEdgeSmoother&) = delete;

    /// Smooths `rhs` into `io`, which on entry holds the vector to start from. The images have one
    /// size and are different ones; all are first cut to 0..1 in place (NaN stays). `guide` is
    /// destroyed. Where the iteration stands after its last step is the result, converged or not;
    /// NaN in an image makes NaN of all.
    /// @param lambda weight of the smoothing
    /// @param exponent e is its integer part: the fraction has no effect
    /// @param logGuide takes ln(0.8 guide + 0.1) for the guide: equal ratios count alike
    /// @param iterations the most steps; the iteration ends earlier when the residual's norm falls
    /// to 1e-5 of its start
    /// @return 1, or 0 for `iterations` below 1: then nothing but the cut has happened to the
    /// images
    /// @throws `kNoSmootherMemory` when there is no memory
    int smooth(GIMG<float>& rhs, GIMG<float>& io, GIMG<float>& guide, float lambda, float exponent,
               bool logGuide, int iterations);

    /// Gives the arrays a new size; nothing happens for the size that they have, or a side below 1.
    /// @throws `kNoSmootherMemory` when there is no memory, or more pixels than an int32 counts;
    /// the workspace is then empty.
    void resize(std::int32_t width, std::int32_t height);

    /// 32-byte aligned at least; null while there is none.
    using Doubles = hwy::AlignedFreeUniquePtr<double[]>;

    double m_eps = 0.0001f;   ///< bounds the weight of pairs that are equal in the guide
    double m_reserved = 0.1f; ///< read by nothing
    std::int32_t m_w = 0;     ///< size of the arrays
    std::int32_t m_h = 0;
    Doubles m_rhs;            ///< n, row-major: right-hand side, then D^-1 r
    Doubles m_solution;       ///< n: start and result
    Doubles m_guide;          ///< n: guide, then the search direction p
    std::int32_t m_n = 0;     ///< m_w*m_h
    Doubles m_cgWork;         ///< 4 n: the three planes below, then the product q
    double* m_wy = nullptr;   ///< into `m_cgWork`, at n: -ay, couplings with the pixel below
    double* m_wx = nullptr;   ///< into `m_cgWork`, at 0: -ax, couplings with the pixel to the right
    double* m_diag = nullptr; ///< into `m_cgWork`, at 2 n: the diagonal of A
    Doubles m_rowSums;        ///< 2 m_h: the rows' parts of one or two sums

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
