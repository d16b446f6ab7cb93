#include "velimproclib/catalogue/arithmetic/Matrices.h"

#include "tests/support/CheckOrder.h"

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <type_traits>
#include <vector>

namespace {

using namespace vel;
using test::CheckedArguments;

/// A matrix of any strides in its own memory; the bytes between its elements are canaries.
template <class T>
class StridedMatrix {
public:
    StridedMatrix(int rows, int columns, int stride1, int stride2)
        : m_rows(rows), m_columns(columns), m_stride1(stride1), m_stride2(stride2),
          m_bytes(static_cast<std::size_t>(rows * stride1 + columns * stride2) + sizeof(T) + 4,
                  0xA5) {}

    /// Row-major or, when `transposed`, column-major, with gaps between the elements.
    static StridedMatrix spaced(int rows, int columns, int gap, bool transposed) {
        const int element = static_cast<int>(sizeof(T)) + 4 * gap;
        return transposed ? StridedMatrix(rows, columns, element, element * rows + 4 * gap)
                          : StridedMatrix(rows, columns, element * columns + 4 * gap, element);
    }

    T* data() { return reinterpret_cast<T*>(m_bytes.data() + 4); }
    int stride1() const { return m_stride1; }
    int stride2() const { return m_stride2; }
    T at(int row, int column) const {
        T value;
        std::memcpy(&value, address(row, column), sizeof(T));
        return value;
    }
    void set(int row, int column, T value) {
        std::memcpy(const_cast<unsigned char*>(address(row, column)), &value, sizeof(T));
    }
    void fill(std::mt19937& random) {
        std::uniform_real_distribution<T> values(T(-3), T(3));
        for (int r = 0; r < m_rows; ++r) {
            for (int c = 0; c < m_columns; ++c) {
                set(r, c, values(random));
            }
        }
    }
    bool operator==(const StridedMatrix& other) const { return m_bytes == other.m_bytes; }

private:
    const unsigned char* address(int row, int column) const {
        return m_bytes.data() + 4 + row * m_stride1 + column * m_stride2;
    }

    int m_rows;
    int m_columns;
    int m_stride1;
    int m_stride2;
    std::vector<unsigned char> m_bytes;
};

template <class T>
constexpr auto kAddVec = [] {
    if constexpr (std::is_same_v<T, float>) {
        return addVecF32;
    } else {
        return addVecF64;
    }
}();
template <class T>
constexpr auto kAddMat = [] {
    if constexpr (std::is_same_v<T, float>) {
        return addMatF32;
    } else {
        return addMatF64;
    }
}();
template <class T>
constexpr auto kMatTransMulVec = [] {
    if constexpr (std::is_same_v<T, float>) {
        return matTransMulVecF32;
    } else {
        return matTransMulVecF64;
    }
}();
template <class T>
constexpr auto kMatTransMulMat = [] {
    if constexpr (std::is_same_v<T, float>) {
        return matTransMulMatF32;
    } else {
        return matTransMulMatF64;
    }
}();

template <class T>
class MatricesOf : public testing::Test {};
using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(MatricesOf, Elements);

constexpr int kTries = 200;

TYPED_TEST(MatricesOf, VectorSumFollowsEveryStride) {
    using Matrix = StridedMatrix<TypeParam>;
    std::mt19937 random(1);
    for (int i = 0; i < kTries; ++i) {
        const int len = static_cast<int>(random() % 40) + 1;
        auto a = Matrix::spaced(len, 1, i % 3, true);
        auto b = Matrix::spaced(len, 1, i % 4, true);
        auto dst = Matrix::spaced(len, 1, i % 5, true);
        a.fill(random);
        b.fill(random);
        auto expected = dst;
        for (int k = 0; k < len; ++k) {
            expected.set(k, 0, a.at(k, 0) + b.at(k, 0));
        }
        ASSERT_EQ(kAddVec<TypeParam>(a.data(), a.stride1(), b.data(), b.stride1(), dst.data(),
                                     dst.stride1(), len),
                  kOk);
        EXPECT_TRUE(dst == expected);
        ASSERT_EQ(kAddVec<TypeParam>(a.data(), a.stride1(), b.data(), b.stride1(), b.data(),
                                     b.stride1(), len),
                  kOk);
        for (int k = 0; k < len; ++k) {
            EXPECT_EQ(b.at(k, 0), expected.at(k, 0));
        }
    }
}

TYPED_TEST(MatricesOf, MatrixSumFollowsEveryStride) {
    using Matrix = StridedMatrix<TypeParam>;
    std::mt19937 random(2);
    for (int i = 0; i < kTries; ++i) {
        const int width = static_cast<int>(random() % 9) + 1;
        const int height = static_cast<int>(random() % 9) + 1;
        auto a = Matrix::spaced(height, width, i % 3, i % 2 == 0);
        auto b = Matrix::spaced(height, width, i % 4, i % 5 == 0);
        auto dst = Matrix::spaced(height, width, i % 5, i % 3 == 0);
        a.fill(random);
        b.fill(random);
        auto expected = dst;
        for (int r = 0; r < height; ++r) {
            for (int c = 0; c < width; ++c) {
                expected.set(r, c, a.at(r, c) + b.at(r, c));
            }
        }
        ASSERT_EQ(kAddMat<TypeParam>(a.data(), a.stride1(), a.stride2(), b.data(), b.stride1(),
                                     b.stride2(), dst.data(), dst.stride1(), dst.stride2(), width,
                                     height),
                  kOk);
        EXPECT_TRUE(dst == expected);
    }
}

TYPED_TEST(MatricesOf, TransposeTimesVectorSumsOverTheRowsInOrder) {
    using Matrix = StridedMatrix<TypeParam>;
    std::mt19937 random(3);
    for (int i = 0; i < kTries; ++i) {
        const int width = static_cast<int>(random() % 12) + 1;
        const int height = static_cast<int>(random() % 12) + 1;
        auto m = Matrix::spaced(height, width, i % 3, i % 2 == 0);
        auto v = Matrix::spaced(height, 1, i % 4, true);
        auto dst = Matrix::spaced(width, 1, i % 5, true);
        m.fill(random);
        v.fill(random);
        auto expected = dst;
        for (int k = 0; k < width; ++k) {
            TypeParam sum = 0;
            for (int d = 0; d < height; ++d) {
                sum += m.at(d, k) * v.at(d, 0);
            }
            expected.set(k, 0, sum);
        }
        ASSERT_EQ(kMatTransMulVec<TypeParam>(m.data(), m.stride1(), m.stride2(), width, height,
                                             v.data(), v.stride1(), height, dst.data(),
                                             dst.stride1()),
                  kOk);
        EXPECT_TRUE(dst == expected);
    }
}

TYPED_TEST(MatricesOf, TransposeTimesMatrixSumsOverTheRowsInOrder) {
    using Matrix = StridedMatrix<TypeParam>;
    std::mt19937 random(4);
    for (int i = 0; i < kTries; ++i) {
        const int aWidth = static_cast<int>(random() % 9) + 1;
        const int bWidth = static_cast<int>(random() % 9) + 1;
        const int height = static_cast<int>(random() % 9) + 1;
        auto a = Matrix::spaced(height, aWidth, i % 3, i % 2 == 0);
        auto b = Matrix::spaced(height, bWidth, i % 4, i % 5 == 0);
        auto dst = Matrix::spaced(aWidth, bWidth, i % 5, i % 3 == 0);
        a.fill(random);
        b.fill(random);
        auto expected = dst;
        for (int r = 0; r < aWidth; ++r) {
            for (int c = 0; c < bWidth; ++c) {
                TypeParam sum = 0;
                for (int d = 0; d < height; ++d) {
                    sum += a.at(d, r) * b.at(d, c);
                }
                expected.set(r, c, sum);
            }
        }
        ASSERT_EQ(kMatTransMulMat<TypeParam>(a.data(), a.stride1(), a.stride2(), aWidth, height,
                                             b.data(), b.stride1(), b.stride2(), bWidth, height,
                                             dst.data(), dst.stride1(), dst.stride2()),
                  kOk);
        EXPECT_TRUE(dst == expected);
    }
}

TYPED_TEST(MatricesOf, DimensionsThatDoNotFitAreRefusedBeforeTheStridesAreLookedAt) {
    std::vector<TypeParam> a(64, TypeParam(1));
    std::vector<TypeParam> dst(64, TypeParam(7));
    const auto untouched = dst;
    for (const int stride : {8, 3}) {
        EXPECT_EQ(
            kMatTransMulVec<TypeParam>(a.data(), stride, 8, 2, 3, a.data(), 8, 2, dst.data(), 8),
            kBadMatrixSize);
        EXPECT_EQ(kMatTransMulMat<TypeParam>(a.data(), stride, 8, 2, 3, a.data(), 8, 8, 2, 4,
                                             dst.data(), 8, 8),
                  kBadMatrixSize);
    }
    EXPECT_EQ(kMatTransMulVec<TypeParam>(a.data(), 8, 8, 2, 3, a.data(), 8, 0, dst.data(), 8),
              kBadSize);
    EXPECT_EQ(dst, untouched);
}

TEST(Matrices, WorkedProduct) {
    // Rows (1 2), (3 4), (5 6) transposed, times (1, 0, 2) and times the matrix itself.
    const double m[] = {1, 2, 3, 4, 5, 6};
    const double v[] = {1, 0, 2};
    double product[2];
    EXPECT_EQ(matTransMulVecF64(m, 16, 8, 2, 3, v, 8, 3, product, 8), kOk);
    EXPECT_EQ(product[0], 11.0);
    EXPECT_EQ(product[1], 14.0);
    double square[4];
    EXPECT_EQ(matTransMulMatF64(m, 16, 8, 2, 3, m, 16, 8, 2, 3, square, 16, 8), kOk);
    EXPECT_EQ(square[0], 35.0);
    EXPECT_EQ(square[1], 44.0);
    EXPECT_EQ(square[2], 44.0);
    EXPECT_EQ(square[3], 56.0);
}

TEST(Matrices, ConstantFormsFollowEveryStrideAndWorkInPlace) {
    std::mt19937 random(5);
    for (int i = 0; i < kTries; ++i) {
        const int len = static_cast<int>(random() % 40) + 1;
        auto src = StridedMatrix<float>::spaced(len, 1, i % 3, true);
        auto sum = StridedMatrix<float>::spaced(len, 1, i % 4, true);
        src.fill(random);
        auto product = src;
        auto expectedSum = sum;
        auto expectedProduct = src;
        for (int k = 0; k < len; ++k) {
            expectedSum.set(k, 0, src.at(k, 0) + 0.3f);
            expectedProduct.set(k, 0, src.at(k, 0) * 0.3f);
        }
        ASSERT_EQ(addVecConstF32(src.data(), src.stride1(), 0.3f, sum.data(), sum.stride1(), len),
                  kOk);
        EXPECT_TRUE(sum == expectedSum);
        ASSERT_EQ(mulVecConstF32(product.data(), product.stride1(), 0.3f, product.data(),
                                 product.stride1(), len),
                  kOk);
        EXPECT_TRUE(product == expectedProduct);
    }
}

TEST(Matrices, StridesOfDoublesNeedNotBeMultiplesOfEight) {
    StridedMatrix<double> a(3, 1, 12, 4);
    for (int k = 0; k < 3; ++k) {
        a.set(k, 0, k + 0.5);
    }
    double dst[3];
    EXPECT_EQ(addVecF64(a.data(), 12, a.data(), 12, dst, 8, 3), kOk);
    EXPECT_EQ(dst[0], 1.0);
    EXPECT_EQ(dst[1], 3.0);
    EXPECT_EQ(dst[2], 5.0);
}

TEST(Matrices, StrideThatIsNoMultipleOfFourIsRefused) {
    const float src[4] = {};
    float dst[4] = {9, 9, 9, 9};
    for (const int stride : {1, 2, 3, 5, 6, 7, -4}) {
        EXPECT_EQ(addVecConstF32(src, stride, 1.0f, dst, 4, 2), kBadMatrixStride);
        EXPECT_EQ(mulVecConstF32(src, 4, 1.0f, dst, stride, 2), kBadMatrixStride);
    }
    EXPECT_EQ(dst[0], 9.0f);
    EXPECT_EQ(dst[1], 9.0f);
}

template <class T>
std::vector<test::CheckedRoutine> typedRoutines() {
    return {
        {"addVec", 3, 1, 3,
         [](const CheckedArguments& g) {
             return kAddVec<T>(g.at<T>(0), g.steps[0], g.at<T>(1), g.steps[1], g.at<T>(2),
                               g.steps[2], g.sizes[0]);
         },
         kBadMatrixStride},
        {"addMat", 3, 2, 6,
         [](const CheckedArguments& g) {
             return kAddMat<T>(g.at<T>(0), g.steps[0], g.steps[1], g.at<T>(1), g.steps[2],
                               g.steps[3], g.at<T>(2), g.steps[4], g.steps[5], g.sizes[0],
                               g.sizes[1]);
         },
         kBadMatrixStride},
        {"matTransMulVec", 3, 3, 4,
         [](const CheckedArguments& g) {
             return kMatTransMulVec<T>(g.at<T>(0), g.steps[0], g.steps[1], g.sizes[0], g.sizes[1],
                                       g.at<T>(1), g.steps[2], g.sizes[2], g.at<T>(2), g.steps[3]);
         },
         kBadMatrixStride},
        {"matTransMulMat", 3, 4, 6,
         [](const CheckedArguments& g) {
             return kMatTransMulMat<T>(g.at<T>(0), g.steps[0], g.steps[1], g.sizes[0], g.sizes[1],
                                       g.at<T>(1), g.steps[2], g.steps[3], g.sizes[2], g.sizes[3],
                                       g.at<T>(2), g.steps[4], g.steps[5]);
         },
         kBadMatrixStride}};
}

TYPED_TEST(MatricesOf, EveryRoutineChecksPointersThenSizesThenStridesAndWritesNothing) {
    for (const test::CheckedRoutine& routine : typedRoutines<TypeParam>()) {
        test::expectChecksInOrder(routine);
    }
}

TEST(Matrices, ConstantFormsCheckPointersThenTheLengthThenStridesAndWriteNothing) {
    for (auto* routine : {addVecConstF32, mulVecConstF32}) {
        test::expectChecksInOrder({"constant form", 2, 1, 2,
                                   [routine](const CheckedArguments& g) {
                                       return routine(g.at<float>(0), g.steps[0], 2.0f,
                                                      g.at<float>(1), g.steps[1], g.sizes[0]);
                                   },
                                   kBadMatrixStride});
    }
}

} // namespace
