#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"

#include "tests/support/EachTarget.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <random>

namespace {

using namespace vel;

constexpr int kOrder = 6;
constexpr int kSide = 1 << kOrder;
constexpr int kRowFloats = RealFft2D::kRowFloats;

AlignedFloats randomSpectrum(const RealFft2D& fft, unsigned seed) {
    AlignedFloats spectrum;
    spectrum.resize(fft.spectrumFloats());
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> value(-1.0f, 1.0f);
    std::generate_n(spectrum.data(), spectrum.size(), [&] { return value(random); });
    return spectrum;
}

/// A complex slot and its frequency (v, u).
struct Slot {
    std::size_t re;
    int v;
    int u;
};

/// Calls check(slot) for every slot that holds one complex frequency.
template <class Check>
void forEachComplexSlot(const RealFft2D& fft, Check&& check) {
    for (int block = 0; block < fft.blockCount(); ++block) {
        for (int v = 0; v < kSide; ++v) {
            for (int lane = 0; lane < RealFft2D::kLanes; ++lane) {
                const bool folded = block == 0 && lane == 0;
                if (folded && v % (kSide / 2) == 0) {
                    continue;
                }
                const int u = folded && v > kSide / 2 ? kSide / 2 : block * 16 + lane;
                check(Slot{static_cast<std::size_t>(block) * fft.blockFloats() +
                               fft.rowOf(v) * kRowFloats + static_cast<std::size_t>(lane),
                           v, u});
            }
        }
    }
}

std::complex<double> at(const AlignedFloats& spectrum, std::size_t slot) {
    return {spectrum.data()[slot], spectrum.data()[slot + RealFft2D::kLanes]};
}

/// |Dx|^2 + |Dy|^2 from the transforms of the two-point filters.
double differencePower(int v, int u) {
    const double step = 2 * std::numbers::pi / kSide;
    return std::norm(std::polar(1.0, step * u) - 1.0) + std::norm(std::polar(1.0, step * v) - 1.0);
}

TEST(SpectralQuotient, RealSlotsAreTheFourRealFrequencies) {
    const RealFft2D fft(kOrder, kOrder);
    const auto slots = realSlots(fft);
    EXPECT_EQ(slots[0], 0u);
    EXPECT_EQ(slots[1], 16u);
    EXPECT_EQ(slots[2], 32 * fft.rowOf(kSide / 2));
    EXPECT_EQ(slots[3], 32 * fft.rowOf(kSide / 2) + 16);
}

TEST(SpectralQuotient, TheProductWithTheConjugateIsComplexExceptAtTheRealFrequencies) {
    const RealFft2D fft(kOrder, kOrder);
    const AlignedFloats a = randomSpectrum(fft, 1);
    const AlignedFloats b = randomSpectrum(fft, 2);
    AlignedFloats product = randomSpectrum(fft, 3);
    for (int block = 0; block < fft.blockCount(); ++block) {
        const std::size_t offset = static_cast<std::size_t>(block) * fft.blockFloats();
        multiplyByConjugate(fft, block, a.data() + offset, b.data() + offset,
                            product.data() + offset);
    }
    forEachComplexSlot(fft, [&](Slot slot) {
        EXPECT_LT(std::abs(at(product, slot.re) - at(a, slot.re) * std::conj(at(b, slot.re))),
                  1e-6);
    });
    for (const std::size_t slot : realSlots(fft)) {
        EXPECT_EQ(product.data()[slot], a.data()[slot] * b.data()[slot]);
    }
}

TEST(SpectralQuotient, TheQuotientWeighsDataAndPriorAtEveryFrequency) {
    const RealFft2D fft(kOrder, kOrder);
    const AlignedFloats kernel = randomSpectrum(fft, 4);
    const AlignedFloats numerator = randomSpectrum(fft, 5);
    const AlignedFloats before = randomSpectrum(fft, 6);
    AlignedFloats x = randomSpectrum(fft, 6);
    SpectralQuotient quotient;
    quotient.setKernel(fft, kernel.data());
    constexpr float kGamma = 0.37f;
    for (int block = 0; block < fft.blockCount(); ++block) {
        const std::size_t offset = static_cast<std::size_t>(block) * fft.blockFloats();
        quotient.divide(block, numerator.data() + offset, kGamma, x.data() + offset);
    }
    const auto weigh = [](auto n, auto a, double power, int v, int u) {
        const double gamma = kGamma;
        return (n + gamma * a) / (power + gamma * differencePower(v, u));
    };
    forEachComplexSlot(fft, [&](Slot slot) {
        const auto expected = weigh(at(numerator, slot.re), at(before, slot.re),
                                    std::norm(at(kernel, slot.re)), slot.v, slot.u);
        EXPECT_LT(std::abs(at(x, slot.re) - expected), 2e-6 * (1 + std::abs(expected)));
    });
    const auto slots = realSlots(fft);
    constexpr int kFrequencies[4][2] = {
        {0, 0}, {0, kSide / 2}, {kSide / 2, 0}, {kSide / 2, kSide / 2}};
    for (std::size_t k = 0; k < slots.size(); ++k) {
        const double value = kernel.data()[slots[k]];
        const double expected = weigh(static_cast<double>(numerator.data()[slots[k]]),
                                      static_cast<double>(before.data()[slots[k]]), value * value,
                                      kFrequencies[k][0], kFrequencies[k][1]);
        EXPECT_NEAR(x.data()[slots[k]], expected, 2e-6 * (1 + std::abs(expected)));
    }
}

TEST(SpectralQuotient, TinyDenominatorsDivideWheneverTheQuotientIsAFloat) {
    // The inverse of a denominator of 1e-40 overflows single precision, the quotient does not.
    const RealFft2D fft(kOrder, kOrder);
    AlignedFloats kernel = randomSpectrum(fft, 4);
    AlignedFloats numerator = randomSpectrum(fft, 5);
    std::fill_n(kernel.data(), kernel.size(), 1e-20f);
    std::fill_n(numerator.data(), numerator.size(), 1e-20f);
    AlignedFloats x = randomSpectrum(fft, 6);
    SpectralQuotient quotient;
    quotient.setKernel(fft, kernel.data());
    test::forEachTarget([&] {
        std::fill_n(x.data(), x.size(), 0.0f);
        for (int block = 0; block < fft.blockCount(); ++block) {
            const std::size_t offset = static_cast<std::size_t>(block) * fft.blockFloats();
            quotient.divide(block, numerator.data() + offset, 0.0f, x.data() + offset);
        }
        EXPECT_TRUE(std::all_of(x.data(), x.data() + x.size(),
                                [](float value) { return value > 1e19f && value < 2e20f; }));
    });
}

TEST(SpectralQuotient, EveryVariantGivesTheSameBits) {
    const RealFft2D fft(kOrder, kOrder);
    const AlignedFloats kernel = randomSpectrum(fft, 7);
    const auto run = [&] {
        AlignedFloats x = randomSpectrum(fft, 9);
        const AlignedFloats numerator = randomSpectrum(fft, 8);
        SpectralQuotient quotient;
        quotient.setKernel(fft, kernel.data());
        for (int block = 0; block < fft.blockCount(); ++block) {
            const std::size_t offset = static_cast<std::size_t>(block) * fft.blockFloats();
            quotient.divide(block, numerator.data() + offset, 1.7f, x.data() + offset);
            multiplyByConjugate(fft, block, x.data() + offset, kernel.data() + offset,
                                x.data() + offset);
        }
        return x;
    };
    const AlignedFloats best = run();
    test::forEachTarget([&] {
        const AlignedFloats x = run();
        EXPECT_EQ(std::memcmp(x.data(), best.data(), x.size() * sizeof(float)), 0);
    });
}

} // namespace
