#pragma once

#include "restoration/finishing/smootherRows.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

#include <vector>

namespace restoration {

/// Smooths a plane and preserves its edges: weighted least squares (Z. Farbman, R. Fattal, D.
/// Lischinski, R. Szeliski, Edge-preserving decompositions for multi-scale tone and detail
/// manipulation, 2008) with the couplings lambda/(|step of ln(0.8 v + 0.1)| + 0.0001) between
/// neighbours.
///
/// Twenty steps of the Chebyshev iteration with the diagonal as preconditioner. Its factors are
/// constants, those of conjugate gradients sums over the whole plane: here the result of a pixel
/// depends on pixels up to 21 away and on nothing else, therefore neighbouring tiles agree to the
/// last bit.
///
/// Serial; an instance belongs to one worker and keeps its memory.
class EdgeAwareSmoother {
public:
    /// Pixels that the result of a pixel depends on: up to this far.
    static constexpr int kReach = 21;

    /// Replaces `plane`, with values in 0..1, by its smooth base.
    /// @throws Failure for a cancelled call; std::bad_alloc
    void smooth(Plane& plane, const Cancellation& cancellation);

private:
    void fit(const Plane& plane);
    void couple(const Plane& plane);
    void start(const Plane& plane, float firstFactor);
    void step(Plane& plane, const StepFactors& factors);
    Couplings couplings(int row) const noexcept;
    ThreeRows threeRows(const Plane& plane, int row) const noexcept;

    Plane m_guide; ///< then the direction of the next step
    Plane m_right;
    Plane m_below;
    Plane m_inverse;
    Plane m_residual;
    Plane m_direction;
    std::vector<float> m_zeros;
};

} // namespace restoration
