#include "velimproclib/catalogue/arithmetic/VectorForms.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/FloatComparison.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PixelValues.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace {

using namespace vel;
using test::GuardedPlane;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kLength = 67;

/// A vector at an odd address.
template <class T>
GuardedPlane<T> randomVector(std::mt19937& random) {
    GuardedPlane<T> vector(kLength, 1, 0, 3);
    vector.fill([&] { return static_cast<T>(test::randomPixel<float>(random)); });
    return vector;
}

/// `routine(a, b, dst, length)` against `reference(a, b)`, into a vector of its own and into `b`.
template <class Routine, class Reference>
void expectElementwise(const Routine& routine, const Reference& reference) {
    std::mt19937 random(1);
    const auto a = randomVector<double>(random);
    const auto b = randomVector<double>(random);
    GuardedPlane<double> apart(kLength, 1, 0, 5);
    auto intoB = b;
    EXPECT_EQ(routine(a.data(), b.data(), apart.data(), kLength), kOk);
    EXPECT_EQ(routine(a.data(), intoB.data(), intoB.data(), kLength), kOk);
    for (int x = 0; x < kLength; ++x) {
        const double expected = reference(a.at(x, 0), b.at(x, 0));
        EXPECT_TRUE(test::sameFloat(apart.at(x, 0), expected)) << x;
        EXPECT_TRUE(test::sameFloat(intoB.at(x, 0), expected)) << x;
    }
    EXPECT_TRUE(apart.intact());
    EXPECT_TRUE(intoB.intact());
}

TEST(VectorForms, DifferenceTakesTheFirstVectorFromTheSecond) {
    expectElementwise(subVecF64, [](double a, double b) { return b - a; });
}

TEST(VectorForms, InPlaceFormsTakeTheirOperandFromTheSource) {
    expectElementwise(
        [](const double* a, const double* b, double* dst, std::int32_t n) {
            std::memmove(dst, b, sizeof(double) * static_cast<std::size_t>(n));
            return subVecInPlaceF64(a, dst, n);
        },
        [](double a, double b) { return b - a; });
    expectElementwise(
        [](const double* a, const double* b, double* dst, std::int32_t n) {
            std::memmove(dst, b, sizeof(double) * static_cast<std::size_t>(n));
            EXPECT_GE(divVecInPlaceF64(a, dst, n), kOk); // zeros warn
            return kOk;
        },
        [](double a, double b) { return b / a; });
}

TEST(VectorForms, DivisorOfZeroWarnsAndAllOtherElementsAreDivided) {
    for (std::size_t at = 0; at < 19; ++at) {
        std::vector<double> src(19, 2.0);
        std::vector<double> srcDst(19, 1.0);
        EXPECT_EQ(divVecInPlaceF64(src.data(), srcDst.data(), 19), kOk);
        src[at] = -0.0;
        EXPECT_EQ(divVecInPlaceF64(src.data(), srcDst.data(), 19), kDivisionByZero);
        for (std::size_t i = 0; i < 19; ++i) {
            EXPECT_EQ(srcDst[i], i == at ? -kInfinity : 0.25);
        }
    }
}

TEST(VectorForms, MagnitudeClearsTheSignOnly) {
    expectElementwise([](const double* a, const double*, double* dst,
                         std::int32_t n) { return absVecF64(a, dst, n); },
                      [](double a, double) { return a < 0.0 ? -a : a; });
    double minusNan = -std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(absVecF64(&minusNan, &minusNan, 1), kOk);
    EXPECT_TRUE(std::isnan(minusNan) && !std::signbit(minusNan));
}

TEST(VectorForms, CopyKeepsEveryBit) {
    std::mt19937 random(4);
    GuardedPlane<float> src(kLength, 1, 0, 3);
    src.fill([&] { return std::bit_cast<float>(static_cast<std::uint32_t>(random())); });
    GuardedPlane<float> dst(kLength, 1, 0, 1);
    EXPECT_EQ(copyVecF32(src.data(), dst.data(), kLength), kOk);
    EXPECT_TRUE(dst.sameBits(src));
    EXPECT_TRUE(dst.intact());
}

TEST(VectorForms, ComplexVectorInterleavesAndAMissingPartCountsAsZeros) {
    std::mt19937 random(6);
    const auto re = randomVector<float>(random);
    const auto im = randomVector<float>(random);
    for (const bool hasRe : {true, false}) {
        for (const bool hasIm : {true, false}) {
            GuardedPlane<float> dst(2 * kLength, 1, 0, 1);
            EXPECT_EQ(realToComplexVec(hasRe ? re.data() : nullptr, hasIm ? im.data() : nullptr,
                                       dst.data(), kLength),
                      kOk);
            for (int x = 0; x < kLength; ++x) {
                EXPECT_TRUE(test::sameFloat(dst.at(2 * x, 0), hasRe ? re.at(x, 0) : 0.0f));
                EXPECT_TRUE(test::sameFloat(dst.at(2 * x + 1, 0), hasIm ? im.at(x, 0) : 0.0f));
            }
            EXPECT_TRUE(dst.intact());
        }
    }
}

TEST(VectorForms, EveryRoutineChecksPointersThenTheLengthAndWritesNothing) {
    using Arguments = test::CheckedArguments;
    const std::vector<test::CheckedRoutine> routines{
        {"copyVecF32", 2, 1, 0,
         [](const Arguments& g) { return copyVecF32(g.at<float>(0), g.at<float>(1), g.sizes[0]); }},
        {"subVecF64", 3, 1, 0,
         [](const Arguments& g) {
             return subVecF64(g.at<double>(0), g.at<double>(1), g.at<double>(2), g.sizes[0]);
         }},
        {"subVecInPlaceF64", 2, 1, 0,
         [](const Arguments& g) {
             return subVecInPlaceF64(g.at<double>(0), g.at<double>(1), g.sizes[0]);
         }},
        {"divVecInPlaceF64", 2, 1, 0,
         [](const Arguments& g) {
             return divVecInPlaceF64(g.at<double>(0), g.at<double>(1), g.sizes[0]);
         }},
        {"absVecF64", 2, 1, 0,
         [](const Arguments& g) {
             return absVecF64(g.at<double>(0), g.at<double>(1), g.sizes[0]);
         }},
        {"realToComplexVec", 1, 1, 0, [](const Arguments& g) {
             return realToComplexVec(nullptr, nullptr, g.at<float>(0), g.sizes[0]);
         }}};
    for (const test::CheckedRoutine& routine : routines) {
        test::expectChecksInOrder(routine);
    }
}

} // namespace
