#include "velimproclib/catalogue/arithmetic/VectorForms.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <cmath>
#include <cstddef>
#include <cstring>

namespace vel {
namespace {

void subtract(const double* a, const double* b, double* dst, std::int32_t len) noexcept {
    for (std::size_t i = 0; i < static_cast<std::size_t>(len); ++i) {
        unaligned(dst)[i].value = unaligned(a)[i].value - unaligned(b)[i].value;
    }
}

} // namespace

Status copyVecF32(const float* src, float* dst, std::int32_t len) noexcept {
    if (const Status status = checkArguments({src, dst}, {len}, {})) {
        return status;
    }
    std::memmove(dst, src, static_cast<std::size_t>(len) * sizeof(float));
    return kOk;
}

Status subVecF64(const double* a, const double* b, double* dst, std::int32_t len) noexcept {
    if (const Status status = checkArguments({a, b, dst}, {len}, {})) {
        return status;
    }
    subtract(b, a, dst, len);
    return kOk;
}

Status subVecInPlaceF64(const double* src, double* srcDst, std::int32_t len) noexcept {
    if (const Status status = checkArguments({src, srcDst}, {len}, {})) {
        return status;
    }
    subtract(srcDst, src, srcDst, len);
    return kOk;
}

Status divVecInPlaceF64(const double* src, double* srcDst, std::int32_t len) noexcept {
    if (const Status status = checkArguments({src, srcDst}, {len}, {})) {
        return status;
    }
    bool zeros = false;
    for (std::size_t i = 0; i < static_cast<std::size_t>(len); ++i) {
        const double divisor = unaligned(src)[i].value;
        zeros = zeros || divisor == 0.0;
        unaligned(srcDst)[i].value /= divisor;
    }
    return zeros ? kDivisionByZero : kOk;
}

Status absVecF64(const double* src, double* dst, std::int32_t len) noexcept {
    if (const Status status = checkArguments({src, dst}, {len}, {})) {
        return status;
    }
    for (std::size_t i = 0; i < static_cast<std::size_t>(len); ++i) {
        unaligned(dst)[i].value = std::fabs(unaligned(src)[i].value);
    }
    return kOk;
}

Status realToComplexVec(const float* re, const float* im, float* dst, std::int32_t len) noexcept {
    if (const Status status = checkArguments({dst}, {len}, {})) {
        return status;
    }
    auto* to = unaligned(dst);
    for (std::size_t i = 0; i < static_cast<std::size_t>(len); ++i) {
        to[2 * i].value = re != nullptr ? unaligned(re)[i].value : 0.0f;
        to[2 * i + 1].value = im != nullptr ? unaligned(im)[i].value : 0.0f;
    }
    return kOk;
}

} // namespace vel
