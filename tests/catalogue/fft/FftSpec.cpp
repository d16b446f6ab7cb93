#include "velimproclib/catalogue/fft/FftSpec.h"

#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/NothrowNewFails.h"
#include "velimproclib/catalogue/fft/PackedSpectrum.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <complex>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace vel;
using test::forEachTarget;
using test::GuardedPlane;

using Plane = GuardedPlane<float>;

struct Free {
    void operator()(FftSpec* spec) const { fftFree(spec); }
};
using SpecPtr = std::unique_ptr<FftSpec, Free>;

SpecPtr makeSpec(int orderX, int orderY) {
    FftSpec* spec = nullptr;
    EXPECT_EQ(fftInitAlloc(&spec, orderX, orderY, 2, 2), kOk);
    return SpecPtr(spec);
}

Plane randomImage(int width, int height, int extraStep = 0, int misalign = 0) {
    Plane image(width, height, extraStep, misalign);
    std::mt19937 random(static_cast<unsigned>(width * 5003 + height));
    std::uniform_real_distribution<float> values(0.0f, 1.0f);
    image.fill([&] { return values(random); });
    return image;
}

/// F(v, u) of `image` from the definition, in double precision.
std::complex<double> byDefinition(const Plane& image, int v, int u) {
    std::complex<double> sum = 0.0;
    for (int y = 0; y < image.height(); ++y) {
        std::complex<double> row = 0.0;
        for (int x = 0; x < image.width(); ++x) {
            const double turn = static_cast<double>(x * u % image.width()) / image.width();
            row += static_cast<double>(image.at(x, y)) * std::polar(1.0, -2.0 * M_PI * turn);
        }
        const double turn = static_cast<double>(y * v % image.height()) / image.height();
        sum += row * std::polar(1.0, -2.0 * M_PI * turn);
    }
    return sum;
}

/// The packed value at (x, y), from the definition.
double packedByDefinition(const Plane& image, int x, int y) {
    const int w = image.width();
    const int h = image.height();
    const auto part = [](std::complex<double> value, bool real) {
        return real ? value.real() : value.imag();
    };
    const bool firstColumn = x == 0;
    const bool lastColumn = x == w - 1;
    if (!firstColumn && !lastColumn) {
        return part(byDefinition(image, y, (x + 1) / 2), x % 2 == 1);
    }
    const int u = firstColumn ? 0 : w / 2;
    if (y == 0) {
        return byDefinition(image, 0, u).real();
    }
    if (y == h - 1) {
        return byDefinition(image, h / 2, u).real();
    }
    return part(byDefinition(image, (y + 1) / 2, u), y % 2 == 1);
}

TEST(FftSpec, ForwardGivesThePackedSpectrumElementByElement) {
    for (int orderX = 0; orderX <= 5; ++orderX) {
        for (int orderY = 0; orderY <= 5; ++orderY) {
            SCOPED_TRACE(testing::Message() << "orders " << orderX << ", " << orderY);
            const SpecPtr spec = makeSpec(orderX, orderY);
            const Plane image = randomImage(1 << orderX, 1 << orderY, 3, 1);
            Plane packed(image.width(), image.height(), 9, 2);
            ASSERT_EQ(fftFwdRealToPack(image.data(), image.step(), packed.data(), packed.step(),
                                       spec.get(), nullptr),
                      kOk);
            double worst = 0.0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    worst = std::max(worst,
                                     std::abs(packed.at(x, y) - packedByDefinition(image, x, y)));
                }
            }
            EXPECT_LT(worst, 4e-7 * image.width() * image.height() + 1e-7);
            EXPECT_TRUE(packed.intact());
        }
    }
}

TEST(FftSpec, InverseOfForwardReturnsTheImageWithoutAnyFurtherScale) {
    for (int orderX = 0; orderX <= 10; ++orderX) {
        for (int orderY = 0; orderY <= 10; ++orderY) {
            SCOPED_TRACE(testing::Message() << "orders " << orderX << ", " << orderY);
            const SpecPtr spec = makeSpec(orderX, orderY);
            const Plane image = randomImage(1 << orderX, 1 << orderY);
            Plane packed(image.width(), image.height(), 4);
            Plane back(image.width(), image.height(), 5, 3);
            ASSERT_EQ(fftFwdRealToPack(image.data(), image.step(), packed.data(), packed.step(),
                                       spec.get(), nullptr),
                      kOk);
            ASSERT_EQ(fftInvPackToReal(packed.data(), packed.step(), back.data(), back.step(),
                                       spec.get(), nullptr),
                      kOk);
            float worst = 0.0f;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    worst = std::max(worst, std::abs(back.at(x, y) - image.at(x, y)));
                }
            }
            EXPECT_LT(worst, 2e-6f);
            EXPECT_TRUE(back.intact());
        }
    }
}

TEST(FftSpec, ForwardCarriesNoFactor) {
    const SpecPtr spec = makeSpec(8, 8);
    Plane image(256, 256);
    image.fill([] { return 1.0f; });
    Plane packed(256, 256);
    fftFwdRealToPack(image.data(), image.step(), packed.data(), packed.step(), spec.get(), nullptr);
    EXPECT_EQ(packed.at(0, 0), 65536.0f);
    EXPECT_EQ(packed.at(1, 0), 0.0f);
    EXPECT_EQ(packed.at(100, 77), 0.0f);
}

TEST(FftSpec, CircularConvolutionIsAProductOfSpectra) {
    const SpecPtr spec = makeSpec(5, 4);
    const Plane image = randomImage(32, 16);
    Plane shift(32, 16);
    shift.fill([] { return 0.0f; });
    shift.set(3, 2, 1.0f);
    Plane a(32, 16);
    Plane b(32, 16);
    fftFwdRealToPack(image.data(), image.step(), a.data(), a.step(), spec.get(), nullptr);
    fftFwdRealToPack(shift.data(), shift.step(), b.data(), b.step(), spec.get(), nullptr);
    mulPackConj(a.data(), a.step(), b.data(), b.step(), a.data(), a.step(), 32, 16);
    Plane moved(32, 16);
    fftInvPackToReal(a.data(), a.step(), moved.data(), moved.step(), spec.get(), nullptr);
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 32; ++x) {
            ASSERT_NEAR(moved.at(x, y), image.at((x + 3) % 32, (y + 2) % 16), 1e-6);
        }
    }
}

TEST(FftSpec, WorkBufferOfAnyAlignmentGivesTheSameBitsAndIsNotOverrun) {
    for (const auto& [orderX, orderY] : {std::pair{0, 0}, {1, 5}, {5, 1}, {6, 6}, {9, 3}}) {
        SCOPED_TRACE(testing::Message() << "orders " << orderX << ", " << orderY);
        const SpecPtr spec = makeSpec(orderX, orderY);
        const Plane image = randomImage(1 << orderX, 1 << orderY);
        Plane expected(image.width(), image.height());
        Plane expectedBack(image.width(), image.height());
        fftFwdRealToPack(image.data(), image.step(), expected.data(), expected.step(), spec.get(),
                         nullptr);
        fftInvPackToReal(expected.data(), expected.step(), expectedBack.data(), expectedBack.step(),
                         spec.get(), nullptr);
        const auto size = static_cast<int>(fftWorkBufferBytes(spec.get()));
        for (const int misalign : {0, 1, 4, 63}) {
            GuardedPlane<std::uint8_t> work(size, 1, 0, misalign);
            Plane packed(image.width(), image.height());
            Plane back(image.width(), image.height());
            ASSERT_EQ(fftFwdRealToPack(image.data(), image.step(), packed.data(), packed.step(),
                                       spec.get(), work.data()),
                      kOk);
            ASSERT_EQ(fftInvPackToReal(packed.data(), packed.step(), back.data(), back.step(),
                                       spec.get(), work.data()),
                      kOk);
            EXPECT_TRUE(packed.sameBits(expected));
            EXPECT_TRUE(back.sameBits(expectedBack));
            EXPECT_TRUE(work.intact());
        }
    }
}

TEST(FftSpec, TransformsMayWorkInPlace) {
    const SpecPtr spec = makeSpec(6, 5);
    const Plane image = randomImage(64, 32, 4);
    Plane packed(64, 32, 4);
    Plane back(64, 32, 4);
    fftFwdRealToPack(image.data(), image.step(), packed.data(), packed.step(), spec.get(), nullptr);
    fftInvPackToReal(packed.data(), packed.step(), back.data(), back.step(), spec.get(), nullptr);
    Plane plane = image;
    fftFwdRealToPack(plane.data(), plane.step(), plane.data(), plane.step(), spec.get(), nullptr);
    EXPECT_TRUE(plane.sameBits(packed));
    fftInvPackToReal(plane.data(), plane.step(), plane.data(), plane.step(), spec.get(), nullptr);
    EXPECT_TRUE(plane.sameBits(back));
    EXPECT_TRUE(plane.intact());
}

TEST(FftSpec, EveryProcessorVariantGivesTheSameBits) {
    for (const auto& [orderX, orderY] : {std::pair{2, 3}, {4, 4}, {6, 5}, {8, 9}}) {
        const SpecPtr spec = makeSpec(orderX, orderY);
        const Plane image = randomImage(1 << orderX, 1 << orderY, 1, 3);
        std::vector<Plane> results;
        forEachTarget([&] {
            Plane packed(image.width(), image.height());
            Plane back(image.width(), image.height());
            fftFwdRealToPack(image.data(), image.step(), packed.data(), packed.step(), spec.get(),
                             nullptr);
            fftInvPackToReal(packed.data(), packed.step(), back.data(), back.step(), spec.get(),
                             nullptr);
            results.push_back(packed);
            results.push_back(back);
            EXPECT_TRUE(packed.sameBits(results[0]));
            EXPECT_TRUE(back.sameBits(results[1]));
        });
    }
}

TEST(FftSpec, ThreadsShareOneSpecificationEachWithItsOwnWorkBuffer) {
    const SpecPtr spec = makeSpec(7, 6);
    const Plane image = randomImage(128, 64);
    Plane expected(128, 64);
    fftFwdRealToPack(image.data(), image.step(), expected.data(), expected.step(), spec.get(),
                     nullptr);
    Plane expectedBack(128, 64);
    fftInvPackToReal(expected.data(), expected.step(), expectedBack.data(), expectedBack.step(),
                     spec.get(), nullptr);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, withBuffer = t % 2 == 0] {
            std::vector<std::uint8_t> work(fftWorkBufferBytes(spec.get()));
            std::uint8_t* buffer = withBuffer ? work.data() : nullptr;
            for (int repeat = 0; repeat < 10; ++repeat) {
                Plane packed(128, 64);
                Plane back(128, 64);
                fftFwdRealToPack(image.data(), image.step(), packed.data(), packed.step(),
                                 spec.get(), buffer);
                fftInvPackToReal(packed.data(), packed.step(), back.data(), back.step(), spec.get(),
                                 buffer);
                wrong += packed.sameBits(expected) && back.sameBits(expectedBack) ? 0 : 1;
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST(FftSpec, OrdersOutsideZeroToThirtyAreRefused) {
    FftSpec* spec = nullptr;
    EXPECT_EQ(fftInitAlloc(&spec, -1, 4, 2, 2), kBadFftOrder);
    EXPECT_EQ(fftInitAlloc(&spec, 31, 4, 2, 2), kBadFftOrder);
    EXPECT_EQ(fftInitAlloc(&spec, 4, -1, 2, 2), kBadFftOrder);
    EXPECT_EQ(fftInitAlloc(&spec, 4, 31, 2, 2), kBadFftOrder);
    EXPECT_EQ(spec, nullptr);
}

TEST(FftSpec, LegalOrdersBeyondAllMemoryAreOutOfMemory) {
    FftSpec* spec = nullptr;
    EXPECT_EQ(fftInitAlloc(&spec, 30, 30, 2, 2), kOutOfMemory);
    EXPECT_EQ(spec, nullptr);
}

TEST(FftSpec, ExhaustedMemoryForTheWorkBufferIsAStatusAndNothingIsWritten) {
    const SpecPtr spec = makeSpec(4, 3);
    const Plane image = randomImage(16, 8);
    Plane result(16, 8);
    result.fill([] { return 7.0f; });
    const Plane before = result;
    std::vector<std::uint8_t> work(fftWorkBufferBytes(spec.get()));
    const test::NothrowNewFails noMemory;
    for (const auto transform : {fftFwdRealToPack, fftInvPackToReal}) {
        EXPECT_EQ(transform(image.data(), image.step(), result.data(), result.step(), spec.get(),
                            nullptr),
                  kOutOfMemory);
        EXPECT_TRUE(result.sameBits(before));
        Plane withBuffer(16, 8);
        EXPECT_EQ(transform(image.data(), image.step(), withBuffer.data(), withBuffer.step(),
                            spec.get(), work.data()),
                  kOk);
    }
}

TEST(FftSpec, NullPointersComeBeforeEverythingElse) {
    EXPECT_EQ(fftInitAlloc(nullptr, 31, 31, 2, 2), kNullPointer);
    EXPECT_EQ(fftFree(nullptr), kNullPointer);
    EXPECT_EQ(fftWorkBufferBytes(nullptr), 0u);
    const SpecPtr spec = makeSpec(2, 2);
    float plane[16] = {};
    EXPECT_EQ(fftFwdRealToPack(nullptr, 0, plane, 16, spec.get(), nullptr), kNullPointer);
    EXPECT_EQ(fftFwdRealToPack(plane, 0, nullptr, 16, spec.get(), nullptr), kNullPointer);
    EXPECT_EQ(fftFwdRealToPack(plane, 0, plane, 16, nullptr, nullptr), kNullPointer);
    EXPECT_EQ(fftInvPackToReal(nullptr, 0, plane, 16, spec.get(), nullptr), kNullPointer);
    EXPECT_EQ(fftInvPackToReal(plane, 0, nullptr, 16, spec.get(), nullptr), kNullPointer);
    EXPECT_EQ(fftInvPackToReal(plane, 0, plane, 16, nullptr, nullptr), kNullPointer);
}

TEST(FftSpec, WrongMagicNumberIsRefusedBeforeTheStepsAreChecked) {
    const SpecPtr spec = makeSpec(2, 2);
    spec->magic ^= 1;
    float plane[16] = {};
    EXPECT_EQ(fftFwdRealToPack(plane, 0, plane, 16, spec.get(), nullptr), kBadFftSpec);
    EXPECT_EQ(fftInvPackToReal(plane, 16, plane, 0, spec.get(), nullptr), kBadFftSpec);
    EXPECT_EQ(fftFree(spec.get()), kBadFftSpec);
    EXPECT_EQ(fftWorkBufferBytes(spec.get()), 0u);
    spec->magic ^= 1;
}

TEST(FftSpec, StepsBelowOneAreRefusedAndNothingIsWritten) {
    const SpecPtr spec = makeSpec(2, 2);
    float plane[16] = {};
    float target[16] = {7.0f};
    EXPECT_EQ(fftFwdRealToPack(plane, 0, target, 16, spec.get(), nullptr), kBadStep);
    EXPECT_EQ(fftFwdRealToPack(plane, 16, target, -16, spec.get(), nullptr), kBadStep);
    EXPECT_EQ(fftInvPackToReal(plane, -16, target, 16, spec.get(), nullptr), kBadStep);
    EXPECT_EQ(fftInvPackToReal(plane, 16, target, 0, spec.get(), nullptr), kBadStep);
    EXPECT_EQ(target[0], 7.0f);
}

TEST(FftSpec, FlagAndHintChangeNothing) {
    const Plane image = randomImage(16, 16);
    const SpecPtr usual = makeSpec(4, 4);
    Plane expected(16, 16);
    fftFwdRealToPack(image.data(), image.step(), expected.data(), expected.step(), usual.get(),
                     nullptr);
    FftSpec* raw = nullptr;
    ASSERT_EQ(fftInitAlloc(&raw, 4, 4, 8, 0), kOk);
    const SpecPtr other(raw);
    Plane packed(16, 16);
    fftFwdRealToPack(image.data(), image.step(), packed.data(), packed.step(), other.get(),
                     nullptr);
    EXPECT_TRUE(packed.sameBits(expected));
}

} // namespace
