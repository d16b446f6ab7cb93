#pragma once

#include "restoration/blind/runs/KernelSystem.h"
#include "restoration/blind/spectra/SquareTransform.h"
#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// The part of a square kernel that may be above 0: columns and rows up to these distances from the
/// centre.
struct KernelReach {
    int columns = 0;
    int rows = 0;
};

/// Solves min k'Ak - 2b'k + g |k|^2 + s |grad k|^2 + 2p |k|_1 for k >= 0 on the kernel's square,
/// with g = 2e-3 A(0), s = 5e-3 A(0), and p a share of the largest b.
///
/// 60 steps of accelerated projected gradients (Beck, Teboulle 2009) with restarts by the gradient
/// (O'Donoghue, Candes 2015). Products with A are cyclic convolutions of a side that holds all
/// differences of two places; they run in single precision, everything else in double.
/// Not thread-safe.
class KernelSolver {
public:
    /// For kernels of this radius.
    /// @throws std::bad_alloc
    KernelSolver(int radius, const Cancellation& cancellation);

    /// Improves `kernel`, whose side is 2 radius + 1. Places outside of `reach` become 0.
    /// @param sparsity p in units of the largest b, at least 0 and below 1
    void improve(const KernelSystem& system, const KernelReach& reach, double sparsity,
                 SquareKernel& kernel);

private:
    void setSystem(const KernelSystem& system);
    /// The product of the system's matrix and `kernel`, in m_plane.
    void multiply(const SquareKernel& kernel);

    SquareTransform m_transform;
    Plane m_plane;
    vel::AlignedFloats m_spectrum;
    vel::AlignedFloats m_symbol; ///< the spectrum of A, for the real and the imaginary parts alike
    double m_largest = 0.0;      ///< of the symbol's magnitudes
};

} // namespace restoration
