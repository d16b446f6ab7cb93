#include "velimproclib/catalogue/fft/PackedSpectrum.h"

#include "tests/support/CheckOrder.h"
#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/PlaneShapes.h"

#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace {

using namespace vel;
using test::forEachTarget;
using test::GuardedPlane;

using Plane = GuardedPlane<float>;
using Complex = std::complex<float>;

const std::vector<std::pair<int, int>> kSizes = {
    {1, 1}, {2, 1}, {1, 2},  {2, 2},   {3, 3},   {4, 4},   {1, 7},   {1, 8},   {7, 1},   {8, 1},
    {5, 8}, {8, 5}, {16, 8}, {67, 31}, {129, 4}, {64, 66}, {130, 3}, {131, 2}, {258, 6}, {1024, 2}};

Plane randomPlane(int width, int height, unsigned seed, int extraStep = 0, int misalign = 0) {
    Plane plane(width, height, extraStep, misalign);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> values(-2.0f, 2.0f);
    plane.fill([&] { return values(random); });
    return plane;
}

/// The places of the real and the imaginary part of F(v, u); a row of -1 means that there is none.
struct Slots {
    int reX, reY, imX, imY;
    bool conjugate;
};

/// The packed layout element by element, independent of the order of the library's loops.
Slots slotsOf(int v, int u, int w, int h) {
    const bool selfConjugateColumn = u == 0 || 2 * u == w;
    if (!selfConjugateColumn) {
        if (2 * u > w) {
            const int mirrored = v == 0 ? 0 : h - v;
            Slots slots = slotsOf(mirrored, w - u, w, h);
            slots.conjugate = !slots.conjugate;
            return slots;
        }
        return {2 * u - 1, v, 2 * u, v, false};
    }
    const int x = u == 0 ? 0 : w - 1;
    if (v == 0) {
        return {x, 0, -1, -1, false};
    }
    if (2 * v == h) {
        return {x, h - 1, -1, -1, false};
    }
    if (2 * v > h) {
        return {x, 2 * (h - v) - 1, x, 2 * (h - v), true};
    }
    return {x, 2 * v - 1, x, 2 * v, false};
}

Complex frequencyOf(const Plane& packed, int v, int u) {
    const Slots slots = slotsOf(v, u, packed.width(), packed.height());
    const float re = packed.at(slots.reX, slots.reY);
    const float im = slots.imX < 0 ? 0.0f : packed.at(slots.imX, slots.imY);
    return {re, slots.conjugate ? -im : im};
}

TEST(PackedSpectrum, LayoutUsesEveryElementExactlyOnce) {
    for (const auto& [w, h] : kSizes) {
        std::vector<int> uses(static_cast<std::size_t>(w * h));
        for (int v = 0; v < h; ++v) {
            for (int u = 0; u <= w / 2; ++u) {
                const Slots slots = slotsOf(v, u, w, h);
                if (slots.conjugate) {
                    continue;
                }
                ++uses[static_cast<std::size_t>(slots.reY * w + slots.reX)];
                if (slots.imX >= 0) {
                    ++uses[static_cast<std::size_t>(slots.imY * w + slots.imX)];
                }
            }
        }
        EXPECT_EQ(uses, std::vector<int>(uses.size(), 1)) << w << " by " << h;
    }
}

TEST(PackedSpectrum, PackToComplexFillsTheOtherHalfByConjugateSymmetry) {
    for (const auto& [w, h] : kSizes) {
        SCOPED_TRACE(testing::Message() << w << " by " << h);
        const Plane packed = randomPlane(w, h, 1, 3, 1);
        Plane complex(2 * w, h, 5, 2);
        ASSERT_EQ(packToComplex(packed.data(), packed.step(), complex.data(), complex.step(), w, h),
                  kOk);
        for (int v = 0; v < h; ++v) {
            for (int u = 0; u < w; ++u) {
                const Complex expected = frequencyOf(packed, v, u);
                ASSERT_EQ(complex.at(2 * u, v), expected.real()) << v << ", " << u;
                ASSERT_EQ(complex.at(2 * u + 1, v), expected.imag()) << v << ", " << u;
            }
        }
        EXPECT_TRUE(complex.intact());
    }
}

TEST(PackedSpectrum, ComplexToPackUndoesPackToComplexWithoutReadingTheRedundantHalf) {
    for (const auto& [w, h] : kSizes) {
        SCOPED_TRACE(testing::Message() << w << " by " << h);
        const Plane packed = randomPlane(w, h, 2);
        Plane complex(2 * w, h, 1);
        packToComplex(packed.data(), packed.step(), complex.data(), complex.step(), w, h);
        for (int v = 0; v < h; ++v) {
            for (int u = 0; u < w; ++u) {
                const Slots slots = slotsOf(v, u, w, h);
                const float spoiled = std::numeric_limits<float>::quiet_NaN();
                if (slots.conjugate) {
                    complex.set(2 * u, v, spoiled);
                }
                if (slots.conjugate || slots.imX < 0) {
                    complex.set(2 * u + 1, v, spoiled);
                }
            }
        }
        Plane back(w, h, 7, 3);
        ASSERT_EQ(complexToPack(complex.data(), complex.step(), back.data(), back.step(), w, h),
                  kOk);
        EXPECT_TRUE(back.sameBits(packed));
        EXPECT_TRUE(back.intact());
    }
}

Plane productByDefinition(const Plane& a, const Plane& b) {
    const int w = a.width();
    const int h = a.height();
    Plane result(w, h);
    for (int v = 0; v < h; ++v) {
        for (int u = 0; u <= w / 2; ++u) {
            const Slots slots = slotsOf(v, u, w, h);
            if (slots.conjugate) {
                continue;
            }
            const float ar = a.at(slots.reX, slots.reY);
            const float br = b.at(slots.reX, slots.reY);
            if (slots.imX < 0) {
                result.set(slots.reX, slots.reY, ar * br);
                continue;
            }
            const float ai = a.at(slots.imX, slots.imY);
            const float bi = b.at(slots.imX, slots.imY);
            result.set(slots.reX, slots.reY, ar * br + ai * bi);
            result.set(slots.imX, slots.imY, ai * br - ar * bi);
        }
    }
    return result;
}

TEST(PackedSpectrum, MulPackConjMultipliesPairsAsComplexAndTheRealFrequenciesAsReal) {
    forEachTarget([] {
        for (const auto& [w, h] : kSizes) {
            SCOPED_TRACE(testing::Message() << w << " by " << h);
            const Plane a = randomPlane(w, h, 3, 3, 1);
            const Plane b = randomPlane(w, h, 4, 0, 2);
            Plane result(w, h, 5, 3);
            ASSERT_EQ(mulPackConj(a.data(), a.step(), b.data(), b.step(), result.data(),
                                  result.step(), w, h),
                      kOk);
            EXPECT_TRUE(result.sameBits(productByDefinition(a, b)));
            EXPECT_TRUE(result.intact());
        }
    });
}

TEST(PackedSpectrum, MulPackConjMayWriteOverEitherOperand) {
    forEachTarget([] {
        for (const auto& [w, h] : kSizes) {
            SCOPED_TRACE(testing::Message() << w << " by " << h);
            const Plane a = randomPlane(w, h, 5);
            const Plane b = randomPlane(w, h, 6);
            const Plane expected = productByDefinition(a, b);
            Plane overA = a;
            mulPackConj(overA.data(), a.step(), b.data(), b.step(), overA.data(), a.step(), w, h);
            EXPECT_TRUE(overA.sameBits(expected));
            Plane overB = b;
            mulPackConj(a.data(), a.step(), overB.data(), b.step(), overB.data(), b.step(), w, h);
            EXPECT_TRUE(overB.sameBits(expected));
        }
    });
}

Plane magnitudesByDefinition(const Plane& packed) {
    Plane result(packed.width(), packed.height());
    return test::mapped(result, [&](float, int u, int v) {
        const Slots slots = slotsOf(v, u, packed.width(), packed.height());
        const float re = packed.at(slots.reX, slots.reY);
        if (slots.imX < 0) {
            return std::fabs(re);
        }
        const float im = packed.at(slots.imX, slots.imY);
        return std::sqrt(re * re + im * im);
    });
}

TEST(PackedSpectrum, MagnitudePackGivesOneValueForEveryFrequency) {
    forEachTarget([] {
        for (const auto& [w, h] : kSizes) {
            SCOPED_TRACE(testing::Message() << w << " by " << h);
            const Plane packed = randomPlane(w, h, 7, 2, 1);
            Plane result(w, h, 3, 2);
            ASSERT_EQ(
                magnitudePack(packed.data(), packed.step(), result.data(), result.step(), w, h),
                kOk);
            EXPECT_TRUE(result.sameBits(magnitudesByDefinition(packed)));
            EXPECT_TRUE(result.intact());
        }
    });
}

/// A plain pair operation of two complex planes, given as planes of 2w floats.
template <class Operation>
Plane pairwise(const Plane& a, const Plane& b, Operation operation) {
    Plane result(a.width(), a.height());
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); x += 2) {
            const Complex value = operation(a.at(x, y), a.at(x + 1, y), b.at(x, y), b.at(x + 1, y));
            result.set(x, y, value.real());
            result.set(x + 1, y, value.imag());
        }
    }
    return result;
}

Complex quotient(float ar, float ai, float br, float bi) {
    const float d = ar * ar + ai * ai;
    return {(ar * br + ai * bi) / d, (ar * bi - ai * br) / d};
}

Complex sum(float ar, float ai, float br, float bi) {
    return {ar + br, ai + bi};
}

TEST(PackedSpectrum, DivComplexDividesTheSecondByTheFirst) {
    forEachTarget([] {
        for (const auto& [w, h] : kSizes) {
            SCOPED_TRACE(testing::Message() << w << " by " << h);
            const Plane a = randomPlane(2 * w, h, 8, 3, 1);
            const Plane b = randomPlane(2 * w, h, 9, 1, 3);
            Plane result(2 * w, h, 2, 2);
            ASSERT_EQ(divComplex(a.data(), a.step(), b.data(), b.step(), result.data(),
                                 result.step(), w, h),
                      kOk);
            const Plane expected = pairwise(a, b, quotient);
            EXPECT_TRUE(result.sameBits(expected));
            EXPECT_TRUE(result.intact());
            Plane overA = a;
            divComplex(overA.data(), a.step(), b.data(), b.step(), overA.data(), a.step(), w, h);
            EXPECT_TRUE(overA.sameBits(expected));
            Plane overB = b;
            divComplex(a.data(), a.step(), overB.data(), b.step(), overB.data(), b.step(), w, h);
            EXPECT_TRUE(overB.sameBits(expected));
        }
    });
}

TEST(PackedSpectrum, DivisionByZeroGivesNaNInBothPartsAndAWarning) {
    forEachTarget([] {
        for (const int zeroAt : {0, 1, 63, 64, 65, 99}) {
            Plane a = randomPlane(200, 2, 10);
            const Plane b = randomPlane(200, 2, 11);
            a.set(2 * zeroAt, 1, 0.0f);
            a.set(2 * zeroAt + 1, 1, -0.0f);
            Plane result(200, 2);
            EXPECT_EQ(divComplex(a.data(), a.step(), b.data(), b.step(), result.data(),
                                 result.step(), 100, 2),
                      kDivisionByZero);
            for (int y = 0; y < 2; ++y) {
                for (int x = 0; x < 100; ++x) {
                    const bool zero = y == 1 && x == zeroAt;
                    ASSERT_EQ(std::isnan(result.at(2 * x, y)), zero) << x;
                    ASSERT_EQ(std::isnan(result.at(2 * x + 1, y)), zero) << x;
                }
            }
        }
    });
}

TEST(PackedSpectrum, DivisorWhoseSquareVanishesCountsAsZero) {
    const float tiny[2] = {1e-30f, 0.0f};
    const float one[2] = {1.0f, 0.0f};
    float result[2] = {};
    EXPECT_EQ(divComplex(tiny, 8, one, 8, result, 8, 1, 1), kDivisionByZero);
    EXPECT_TRUE(std::isnan(result[0]));
    EXPECT_TRUE(std::isnan(result[1]));
}

TEST(PackedSpectrum, DivisionKeepsEveryBitOfTheQuotient) {
    const float three[2] = {3.0f, 0.0f};
    const float one[2] = {1.0f, 0.0f};
    float result[2] = {};
    EXPECT_EQ(divComplex(three, 8, one, 8, result, 8, 1, 1), kOk);
    EXPECT_EQ(result[0], 3.0f / 9.0f);
    EXPECT_EQ(result[1], 0.0f);
}

TEST(PackedSpectrum, AddComplexAddsPartByPart) {
    forEachTarget([] {
        for (const auto& [w, h] : kSizes) {
            const Plane a = randomPlane(2 * w, h, 12, 3, 1);
            const Plane b = randomPlane(2 * w, h, 13, 1, 3);
            Plane result(2 * w, h, 2, 2);
            ASSERT_EQ(addComplex(a.data(), a.step(), b.data(), b.step(), result.data(),
                                 result.step(), w, h),
                      kOk);
            const Plane expected = pairwise(a, b, sum);
            EXPECT_TRUE(result.sameBits(expected)) << w << " by " << h;
            EXPECT_TRUE(result.intact());
            Plane overA = a;
            addComplex(overA.data(), a.step(), b.data(), b.step(), overA.data(), a.step(), w, h);
            EXPECT_TRUE(overA.sameBits(expected)) << w << " by " << h;
            Plane overB = b;
            addComplex(a.data(), a.step(), overB.data(), b.step(), overB.data(), b.step(), w, h);
            EXPECT_TRUE(overB.sameBits(expected)) << w << " by " << h;
        }
    });
}

TEST(PackedSpectrum, MulConstComplexMultipliesByOneComplexNumber) {
    forEachTarget([] {
        for (const auto& [w, h] : kSizes) {
            const Plane src = randomPlane(2 * w, h, 14, 3, 1);
            const float re = 1.7f;
            const float im = -0.3f;
            Plane result(2 * w, h, 2, 2);
            ASSERT_EQ(
                mulConstComplex(src.data(), src.step(), re, im, result.data(), result.step(), w, h),
                kOk);
            const Plane expected = pairwise(src, src, [&](float x, float y, float, float) {
                return Complex{x * re - y * im, x * im + y * re};
            });
            EXPECT_TRUE(result.sameBits(expected)) << w << " by " << h;
            EXPECT_TRUE(result.intact());
            Plane over = src;
            mulConstComplex(over.data(), over.step(), re, im, over.data(), over.step(), w, h);
            EXPECT_TRUE(over.sameBits(expected)) << w << " by " << h;
        }
    });
}

/// A third of the values are NaN or infinities of both signs.
Plane oddPlane(int width, int height, unsigned seed) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Plane plane = randomPlane(width, height, seed);
    std::mt19937 random(seed);
    return test::mapped(plane, [&](float v, int, int) {
        switch (random() % 9) {
        case 0:
            return std::numeric_limits<float>::quiet_NaN();
        case 1:
            return kInfinity;
        case 2:
            return -kInfinity;
        default:
            return v;
        }
    });
}

TEST(PackedSpectrum, NaNAndInfinitiesSpreadToTheirOwnFrequencyOnly) {
    forEachTarget([] {
        for (const auto& [w, h] : kSizes) {
            SCOPED_TRACE(testing::Message() << w << " by " << h);
            const Plane a = oddPlane(w, h, 15);
            const Plane b = oddPlane(w, h, 16);
            Plane product(w, h);
            EXPECT_EQ(mulPackConj(a.data(), a.step(), b.data(), b.step(), product.data(),
                                  product.step(), w, h),
                      kOk);
            EXPECT_TRUE(test::sameFloats(product, productByDefinition(a, b)));
            Plane magnitudes(w, h);
            EXPECT_EQ(magnitudePack(a.data(), a.step(), magnitudes.data(), magnitudes.step(), w, h),
                      kOk);
            EXPECT_TRUE(test::sameFloats(magnitudes, magnitudesByDefinition(a)));
        }
    });
}

TEST(PackedSpectrum, QuotientsOfNaNAndInfinitiesFollowTheFormulaWithoutAWarning) {
    forEachTarget([] {
        for (const auto& [w, h] : kSizes) {
            SCOPED_TRACE(testing::Message() << w << " by " << h);
            const Plane a = oddPlane(2 * w, h, 17);
            const Plane b = oddPlane(2 * w, h, 18);
            Plane result(2 * w, h);
            EXPECT_EQ(divComplex(a.data(), a.step(), b.data(), b.step(), result.data(),
                                 result.step(), w, h),
                      kOk);
            EXPECT_TRUE(test::sameFloats(result, pairwise(a, b, quotient)));
        }
    });
}

using Unary = Status (*)(const float*, std::int32_t, float*, std::int32_t, std::int32_t,
                         std::int32_t) noexcept;
using Binary = Status (*)(const float*, std::int32_t, const float*, std::int32_t, float*,
                          std::int32_t, std::int32_t, std::int32_t) noexcept;

TEST(PackedSpectrum, EveryRoutineChecksPointersThenSizesThenStepsAndWritesNothing) {
    using Arguments = test::CheckedArguments;
    for (const Unary routine : {packToComplex, complexToPack, magnitudePack}) {
        test::expectChecksInOrder({"of one", 2, 2, 2, [routine](const Arguments& g) {
                                       return routine(g.at<float>(0), g.steps[0], g.at<float>(1),
                                                      g.steps[1], g.sizes[0], g.sizes[1]);
                                   }});
    }
    for (const Binary routine : {mulPackConj, divComplex, addComplex}) {
        test::expectChecksInOrder({"of two", 3, 2, 3, [routine](const Arguments& g) {
                                       return routine(g.at<float>(0), g.steps[0], g.at<float>(1),
                                                      g.steps[1], g.at<float>(2), g.steps[2],
                                                      g.sizes[0], g.sizes[1]);
                                   }});
    }
    test::expectChecksInOrder({"mulConstComplex", 2, 2, 2, [](const Arguments& g) {
                                   return mulConstComplex(g.at<float>(0), g.steps[0], 1.0f, 0.0f,
                                                          g.at<float>(1), g.steps[1], g.sizes[0],
                                                          g.sizes[1]);
                               }});
}

} // namespace
