#include "velimproclib/catalogue/arithmetic/Matrices.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <cstddef>
#include <functional>
#include <initializer_list>

namespace vel {
namespace {

constexpr std::int32_t kStrideUnit = 4;

/// The elements of a matrix with strides in bytes; a vector is a matrix of one column.
template <class T>
class Strided {
public:
    Strided(T* base, std::int32_t rowStride, std::int32_t columnStride = kStrideUnit)
        : m_base(base), m_rowStride(rowStride), m_columnStride(columnStride) {}

    auto get(std::int32_t row, std::int32_t column = 0) const { return at(row, column)->value; }
    void set(std::int32_t row, std::int32_t column, T value) const {
        at(row, column)->value = value;
    }

private:
    auto at(std::int32_t row, std::int32_t column) const {
        return rowAt(rowAt(unaligned(m_base), m_rowStride, static_cast<std::size_t>(row)),
                     m_columnStride, static_cast<std::size_t>(column));
    }

    T* m_base;
    std::int32_t m_rowStride;
    std::int32_t m_columnStride;
};

Status checkStrides(std::initializer_list<std::int32_t> strides) {
    for (const std::int32_t stride : strides) {
        if (stride < 1 || stride % kStrideUnit != 0) {
            return kBadMatrixStride;
        }
    }
    return kOk;
}

Status checkMatrixArguments(std::initializer_list<const void*> pointers,
                            std::initializer_list<std::int32_t> sizes, bool sizesFit,
                            std::initializer_list<std::int32_t> strides) {
    if (const Status status = checkArguments(pointers, sizes, {})) {
        return status;
    }
    return sizesFit ? checkStrides(strides) : kBadMatrixSize;
}

template <class T>
void addElements(Strided<const T> a, Strided<const T> b, Strided<T> dst, std::int32_t width,
                 std::int32_t height) {
    for (std::int32_t row = 0; row < height; ++row) {
        for (std::int32_t column = 0; column < width; ++column) {
            dst.set(row, column, a.get(row, column) + b.get(row, column));
        }
    }
}

template <class T>
void multiplyTransposed(Strided<const T> a, std::int32_t aWidth, Strided<const T> b,
                        std::int32_t bWidth, std::int32_t height, Strided<T> dst) {
    for (std::int32_t i = 0; i < aWidth; ++i) {
        for (std::int32_t j = 0; j < bWidth; ++j) {
            T sum = 0;
            for (std::int32_t row = 0; row < height; ++row) {
                sum += a.get(row, i) * b.get(row, j);
            }
            dst.set(i, j, sum);
        }
    }
}

template <class T>
Status addVec(const T* a, std::int32_t aStride, const T* b, std::int32_t bStride, T* dst,
              std::int32_t dstStride, std::int32_t len) {
    const Status status =
        checkMatrixArguments({a, b, dst}, {len}, true, {aStride, bStride, dstStride});
    if (status == kOk) {
        addElements(Strided(a, aStride), Strided(b, bStride), Strided(dst, dstStride), 1, len);
    }
    return status;
}

template <class Combine>
Status combineWithConst(const float* src, std::int32_t stride, float value, float* dst,
                        std::int32_t dstStride, std::int32_t len, Combine combine) {
    const Status status = checkMatrixArguments({src, dst}, {len}, true, {stride, dstStride});
    if (status == kOk) {
        const Strided from(src, stride);
        const Strided to(dst, dstStride);
        for (std::int32_t i = 0; i < len; ++i) {
            to.set(i, 0, combine(from.get(i), value));
        }
    }
    return status;
}

template <class T>
Status addMat(const T* a, std::int32_t aS1, std::int32_t aS2, const T* b, std::int32_t bS1,
              std::int32_t bS2, T* dst, std::int32_t dS1, std::int32_t dS2, std::int32_t width,
              std::int32_t height) {
    const Status status =
        checkMatrixArguments({a, b, dst}, {width, height}, true, {aS1, aS2, bS1, bS2, dS1, dS2});
    if (status == kOk) {
        addElements(Strided(a, aS1, aS2), Strided(b, bS1, bS2), Strided(dst, dS1, dS2), width,
                    height);
    }
    return status;
}

template <class T>
Status matTransMulVec(const T* m, std::int32_t stride1, std::int32_t stride2, std::int32_t width,
                      std::int32_t height, const T* v, std::int32_t vStride, std::int32_t vLen,
                      T* dst, std::int32_t dstStride) {
    const Status status = checkMatrixArguments({m, v, dst}, {width, height, vLen}, height == vLen,
                                               {stride1, stride2, vStride, dstStride});
    if (status == kOk) {
        multiplyTransposed(Strided(m, stride1, stride2), width, Strided(v, vStride), 1, height,
                           Strided(dst, dstStride));
    }
    return status;
}

template <class T>
Status matTransMulMat(const T* a, std::int32_t aS1, std::int32_t aS2, std::int32_t aWidth,
                      std::int32_t aHeight, const T* b, std::int32_t bS1, std::int32_t bS2,
                      std::int32_t bWidth, std::int32_t bHeight, T* dst, std::int32_t dS1,
                      std::int32_t dS2) {
    const Status status = checkMatrixArguments({a, b, dst}, {aWidth, aHeight, bWidth, bHeight},
                                               aHeight == bHeight, {aS1, aS2, bS1, bS2, dS1, dS2});
    if (status == kOk) {
        multiplyTransposed(Strided(a, aS1, aS2), aWidth, Strided(b, bS1, bS2), bWidth, aHeight,
                           Strided(dst, dS1, dS2));
    }
    return status;
}

} // namespace

Status addVecConstF32(const float* src, std::int32_t stride, float value, float* dst,
                      std::int32_t dstStride, std::int32_t len) noexcept {
    return combineWithConst(src, stride, value, dst, dstStride, len, std::plus());
}

Status mulVecConstF32(const float* src, std::int32_t stride, float value, float* dst,
                      std::int32_t dstStride, std::int32_t len) noexcept {
    return combineWithConst(src, stride, value, dst, dstStride, len, std::multiplies());
}

Status addVecF32(const float* a, std::int32_t aStride, const float* b, std::int32_t bStride,
                 float* dst, std::int32_t dstStride, std::int32_t len) noexcept {
    return addVec(a, aStride, b, bStride, dst, dstStride, len);
}

Status addVecF64(const double* a, std::int32_t aStride, const double* b, std::int32_t bStride,
                 double* dst, std::int32_t dstStride, std::int32_t len) noexcept {
    return addVec(a, aStride, b, bStride, dst, dstStride, len);
}

Status addMatF32(const float* a, std::int32_t aS1, std::int32_t aS2, const float* b,
                 std::int32_t bS1, std::int32_t bS2, float* dst, std::int32_t dS1, std::int32_t dS2,
                 std::int32_t width, std::int32_t height) noexcept {
    return addMat(a, aS1, aS2, b, bS1, bS2, dst, dS1, dS2, width, height);
}

Status addMatF64(const double* a, std::int32_t aS1, std::int32_t aS2, const double* b,
                 std::int32_t bS1, std::int32_t bS2, double* dst, std::int32_t dS1,
                 std::int32_t dS2, std::int32_t width, std::int32_t height) noexcept {
    return addMat(a, aS1, aS2, b, bS1, bS2, dst, dS1, dS2, width, height);
}

Status matTransMulVecF32(const float* m, std::int32_t stride1, std::int32_t stride2,
                         std::int32_t width, std::int32_t height, const float* v,
                         std::int32_t vStride, std::int32_t vLen, float* dst,
                         std::int32_t dstStride) noexcept {
    return matTransMulVec(m, stride1, stride2, width, height, v, vStride, vLen, dst, dstStride);
}

Status matTransMulVecF64(const double* m, std::int32_t stride1, std::int32_t stride2,
                         std::int32_t width, std::int32_t height, const double* v,
                         std::int32_t vStride, std::int32_t vLen, double* dst,
                         std::int32_t dstStride) noexcept {
    return matTransMulVec(m, stride1, stride2, width, height, v, vStride, vLen, dst, dstStride);
}

Status matTransMulMatF32(const float* a, std::int32_t aS1, std::int32_t aS2, std::int32_t aWidth,
                         std::int32_t aHeight, const float* b, std::int32_t bS1, std::int32_t bS2,
                         std::int32_t bWidth, std::int32_t bHeight, float* dst, std::int32_t dS1,
                         std::int32_t dS2) noexcept {
    return matTransMulMat(a, aS1, aS2, aWidth, aHeight, b, bS1, bS2, bWidth, bHeight, dst, dS1,
                          dS2);
}

Status matTransMulMatF64(const double* a, std::int32_t aS1, std::int32_t aS2, std::int32_t aWidth,
                         std::int32_t aHeight, const double* b, std::int32_t bS1, std::int32_t bS2,
                         std::int32_t bWidth, std::int32_t bHeight, double* dst, std::int32_t dS1,
                         std::int32_t dS2) noexcept {
    return matTransMulMat(a, aS1, aS2, aWidth, aHeight, b, bS1, bS2, bWidth, bHeight, dst, dS1,
                          dS2);
}

} // namespace vel
