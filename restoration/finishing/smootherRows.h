#pragma once

#include <cstddef>

/// Row operations of `EdgeAwareSmoother`. Rows have `count` elements, at least 1; targets overlap
/// no other row. All processor variants give the same bits.
namespace restoration {

/// coupling = lambda / (|b - a| + epsilon)
void couplingRow(float lambda, float epsilon, const float* a, const float* b, float* coupling,
                 std::size_t count) noexcept;

/// The couplings of a row of pixels; those with pixels that do not exist are 0.
struct Couplings {
    const float* right; ///< with the pixel to the right
    const float* above;
    const float* below;
};

/// inverse = 1 / (1 + the couplings of the pixel)
void inverseDiagonalRow(const Couplings& couplings, float* inverse, std::size_t count) noexcept;

/// A row and its neighbours; any row replaces one that does not exist.
struct ThreeRows {
    const float* above;
    const float* here;
    const float* below;
};

/// residual = -inverse (L v), with L the graph Laplacian of the couplings.
void startResidualRow(const Couplings& couplings, const float* inverse, const ThreeRows& v,
                      float* residual, std::size_t count) noexcept;

/// The factors of a step of the iteration.
struct StepFactors {
    float keep; ///< of the direction
    float add;  ///< of the residual
};

/// A step: solution += direction, residual -= inverse (direction + L direction), then
/// next = keep direction + add residual.
void stepRow(const Couplings& couplings, const float* inverse, const ThreeRows& direction,
             const StepFactors& factors, float* solution, float* residual, float* next,
             std::size_t count) noexcept;

} // namespace restoration
