#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "restoration/finishing/smootherRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "restoration/finishing/smootherRows.h"

#include <cmath>

HWY_BEFORE_NAMESPACE();
namespace restoration::HWY_NAMESPACE {
namespace {

/// The sum over the neighbours of a pixel, those to the left and right given apart.
HWY_INLINE float laplacian(const Couplings& couplings, const ThreeRows& v, std::size_t i,
                           float left, float right) {
    const float here = v.here[i];
    const float vertical =
        couplings.above[i] * (here - v.above[i]) + couplings.below[i] * (here - v.below[i]);
    return vertical + (left + right);
}

/// put(i, L v) for all pixels of a row.
template <class Put>
HWY_INLINE void forEachLaplacian(const Couplings& couplings, const ThreeRows& v, std::size_t count,
                                 const Put& put) {
    const float* HWY_RESTRICT right = couplings.right;
    const float* HWY_RESTRICT here = v.here;
    const auto toLeft = [=](std::size_t i)
                            HWY_ATTR { return right[i - 1] * (here[i] - here[i - 1]); };
    const auto toRight = [=](std::size_t i) HWY_ATTR { return right[i] * (here[i] - here[i + 1]); };
    const std::size_t last = count - 1;
    put(0, laplacian(couplings, v, 0, 0.0f, last > 0 ? toRight(0) : 0.0f));
    for (std::size_t i = 1; i < last; ++i) {
        put(i, laplacian(couplings, v, i, toLeft(i), toRight(i)));
    }
    if (last > 0) {
        put(last, laplacian(couplings, v, last, toLeft(last), 0.0f));
    }
}

} // namespace

void couplingLanes(float lambda, float epsilon, const float* HWY_RESTRICT a,
                   const float* HWY_RESTRICT b, float* HWY_RESTRICT coupling, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        coupling[i] = lambda / (std::fabs(b[i] - a[i]) + epsilon);
    }
}

void inverseDiagonalLanes(const Couplings& couplings, float* HWY_RESTRICT inverse,
                          std::size_t count) {
    const float* HWY_RESTRICT right = couplings.right;
    inverse[0] = 1.0f / (1.0f + right[0] + (couplings.above[0] + couplings.below[0]));
    for (std::size_t i = 1; i < count; ++i) {
        inverse[i] =
            1.0f / (1.0f + (right[i] + right[i - 1]) + (couplings.above[i] + couplings.below[i]));
    }
}

void startResidualLanes(const Couplings& couplings, const float* HWY_RESTRICT inverse,
                        const ThreeRows& v, float* HWY_RESTRICT residual, std::size_t count) {
    forEachLaplacian(couplings, v, count,
                     [=](std::size_t i, float sum) HWY_ATTR { residual[i] = -(inverse[i] * sum); });
}

void stepLanes(const Couplings& couplings, const float* HWY_RESTRICT inverse,
               const ThreeRows& direction, const StepFactors& factors, float* HWY_RESTRICT solution,
               float* HWY_RESTRICT residual, float* HWY_RESTRICT next, std::size_t count) {
    const float* HWY_RESTRICT here = direction.here;
    const StepFactors set = factors;
    forEachLaplacian(couplings, direction, count, [=](std::size_t i, float sum) HWY_ATTR {
        const float rest = residual[i] - inverse[i] * (here[i] + sum);
        solution[i] = solution[i] + here[i];
        residual[i] = rest;
        next[i] = set.keep * here[i] + set.add * rest;
    });
}

} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace restoration {

HWY_EXPORT(couplingLanes);
HWY_EXPORT(inverseDiagonalLanes);
HWY_EXPORT(startResidualLanes);
HWY_EXPORT(stepLanes);

void couplingRow(float lambda, float epsilon, const float* a, const float* b, float* coupling,
                 std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(couplingLanes)(lambda, epsilon, a, b, coupling, count);
}

void inverseDiagonalRow(const Couplings& couplings, float* inverse, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(inverseDiagonalLanes)(couplings, inverse, count);
}

void startResidualRow(const Couplings& couplings, const float* inverse, const ThreeRows& v,
                      float* residual, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(startResidualLanes)(couplings, inverse, v, residual, count);
}

void stepRow(const Couplings& couplings, const float* inverse, const ThreeRows& direction,
             const StepFactors& factors, float* solution, float* residual, float* next,
             std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(stepLanes)
    (couplings, inverse, direction, factors, solution, residual, next, count);
}

} // namespace restoration
#endif
