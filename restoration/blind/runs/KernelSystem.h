#pragma once

#include "restoration/blind/runs/LatentGradients.h"
#include "restoration/blind/spectra/SquareTransform.h"

#include <vector>

namespace restoration {

/// The quadratic k'Ak - 2 b'k that a kernel k of radius r minimises when it blurs the gradients of
/// the sharp picture into those of the blurred one.
struct KernelSystem {
    int radius = 0;
    /// A(d) = sum over p of the products of gradients at p and p + d, |d| <= 2r per axis: a square
    /// of side 4r + 1 with d = 0 in the middle. A(d) = A(-d).
    std::vector<double> autocorrelation;
    /// b(d) = sum of products of the gradients at p and those of the blurred picture at p + d,
    /// |d| <= r: a square of side 2r + 1.
    std::vector<double> correlation;

    /// The summed squares of the gradients.
    double energy() const { return autocorrelation[autocorrelation.size() / 2]; }
};

/// Computes the systems of one level from cyclic correlations (the data term of Cho and Lee: Fast
/// motion deblurring, SIGGRAPH Asia 2009, in convolution form). Not thread-safe.
class KernelSystems {
public:
    /// @throws std::bad_alloc
    explicit KernelSystems(SquareTransform& transform);

    /// The system of `gradients` as they are now. 4 `radius` + 1 is at most the transform's side.
    KernelSystem of(LatentGradients& gradients, int radius);

private:
    std::vector<double> lags(vel::AlignedFloats& spectrum, int reach);

    SquareTransform& m_transform;
    vel::AlignedFloats m_first;
    vel::AlignedFloats m_second;
    Plane m_plane;
};

} // namespace restoration
