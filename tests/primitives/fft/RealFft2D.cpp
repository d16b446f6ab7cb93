#include "velimproclib/primitives/fft/RealFft2D.h"

#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstring>
#include <fftw3.h>
#include <gtest/gtest.h>
#include <hwy/aligned_allocator.h>
#include <memory>
#include <new>
#include <random>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace vel;
using test::forEachTarget;
using test::GuardedPlane;

using Plane = GuardedPlane<float>;
using Spectrum = std::vector<std::complex<double>>; // rows of w/2 + 1 (1 for w = 1)

/// Floats at 64-byte alignment, followed by canaries.
class Buffer {
public:
    explicit Buffer(std::size_t count)
        : m_count(count), m_floats(hwy::AllocateAligned<float>(count + kCanaries)) {
        std::fill_n(m_floats.get(), count + kCanaries, kCanary);
    }
    float* data() const { return m_floats.get(); }
    std::size_t size() const { return m_count; }
    bool intact() const {
        return std::all_of(data() + m_count, data() + m_count + kCanaries,
                           [](float f) { return f == kCanary; });
    }

private:
    static constexpr std::size_t kCanaries = 32;
    static constexpr float kCanary = -8.25e7f;
    std::size_t m_count;
    hwy::AlignedFreeUniquePtr<float[]> m_floats;
};

Plane randomImage(int width, int height, int extraStep = 0, int misalign = 0) {
    Plane image(width, height, extraStep, misalign);
    std::mt19937 random(static_cast<unsigned>(width * 4099 + height));
    std::uniform_real_distribution<float> values(-1.0f, 1.0f);
    image.fill([&] { return values(random); });
    return image;
}

void forward(const RealFft2D& fft, const Plane& image, float* spectrum, float* scratch) {
    for (int group = 0; group < fft.groupCount(); ++group) {
        fft.forwardRows(image.data(), image.step(), group, spectrum, scratch);
    }
    for (int block = 0; block < fft.blockCount(); ++block) {
        fft.forwardColumns(spectrum + static_cast<std::size_t>(block) * fft.blockFloats(), block);
    }
}

void inverse(const RealFft2D& fft, float* spectrum, Plane& image, float* scratch) {
    for (int block = 0; block < fft.blockCount(); ++block) {
        fft.inverseColumns(spectrum + static_cast<std::size_t>(block) * fft.blockFloats(), block);
    }
    for (int group = 0; group < fft.groupCount(); ++group) {
        fft.inverseRows(spectrum, group, image.data(), image.step(), scratch);
    }
}

/// One-dimensional complex transform by its definition.
void definition(std::vector<std::complex<double>>& x) {
    const std::size_t n = x.size();
    std::vector<std::complex<double>> result(n);
    for (std::size_t k = 0; k < n; ++k) {
        for (std::size_t i = 0; i < n; ++i) {
            const double turn = static_cast<double>(i * k % n) / static_cast<double>(n);
            result[k] += x[i] * std::polar(1.0, -2.0 * M_PI * turn);
        }
    }
    x = result;
}

/// The full spectrum, rows of w, from the definition in double precision.
Spectrum byDefinition(const Plane& image) {
    const auto w = static_cast<std::size_t>(image.width());
    const auto h = static_cast<std::size_t>(image.height());
    Spectrum full(w * h);
    for (std::size_t y = 0; y < h; ++y) {
        std::vector<std::complex<double>> row(w);
        for (std::size_t x = 0; x < w; ++x) {
            row[x] = image.at(static_cast<int>(x), static_cast<int>(y));
        }
        definition(row);
        std::copy(row.begin(), row.end(), full.begin() + static_cast<std::ptrdiff_t>(y * w));
    }
    for (std::size_t u = 0; u < w; ++u) {
        std::vector<std::complex<double>> column(h);
        for (std::size_t v = 0; v < h; ++v) {
            column[v] = full[v * w + u];
        }
        definition(column);
        for (std::size_t v = 0; v < h; ++v) {
            full[v * w + u] = column[v];
        }
    }
    return full;
}

/// The columns 0..w/2 of the spectrum by the reference package, in rows of w/2 + 1.
std::vector<std::complex<float>> byReference(const Plane& image) {
    const int w = image.width();
    const int h = image.height();
    std::vector<float> pixels;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            pixels.push_back(image.at(x, y));
        }
    }
    std::vector<std::complex<float>> result(static_cast<std::size_t>(w / 2 + 1) *
                                            static_cast<std::size_t>(h));
    const auto plan = fftwf_plan_dft_r2c_2d(
        h, w, pixels.data(), reinterpret_cast<fftwf_complex*>(result.data()), FFTW_ESTIMATE);
    fftwf_execute(plan);
    fftwf_destroy_plan(plan);
    return result;
}

/// Reads F(v, u), 0 <= u <= w/2, from the half spectrum.
std::complex<double> frequency(const RealFft2D& fft, const float* spectrum, int v, int u) {
    const int h = fft.height();
    const auto stored = [&](int row, int column) {
        const float* p = spectrum + static_cast<std::size_t>(column / 16) * fft.blockFloats() +
                         fft.rowOf(row) * 32 + static_cast<std::size_t>(column % 16);
        return std::complex<double>(p[0], p[16]);
    };
    if (u != 0 && u != fft.width() / 2) {
        return stored(v, u);
    }
    const bool second = u != 0;
    if (v == 0 || 2 * v == h) {
        return second ? stored(v, 0).imag() : stored(v, 0).real();
    }
    const int low = std::min(v, h - v);
    const auto value = stored(second ? h - low : low, 0);
    return v == low ? value : std::conj(value);
}

/// Error bound of a transform of n values in [-1, 1]: a few roundings for each of log n levels, of
/// values that grow with sqrt n.
double tolerance(int w, int h) {
    const double n = static_cast<double>(w) * h;
    return 2e-7 * std::sqrt(n) * (2.0 + std::log2(n));
}

TEST(RealFft2D, AgreesWithTheDefinitionForAllSmallSizes) {
    for (int orderX = 0; orderX <= 6; ++orderX) {
        for (int orderY = 0; orderY <= 6; ++orderY) {
            SCOPED_TRACE(testing::Message() << "orders " << orderX << ", " << orderY);
            const RealFft2D fft(orderX, orderY);
            const Plane image = randomImage(fft.width(), fft.height());
            const Buffer spectrum(fft.spectrumFloats());
            const Buffer scratch(fft.scratchFloats());
            forward(fft, image, spectrum.data(), scratch.data());
            const Spectrum expected = byDefinition(image);
            double worst = 0.0;
            for (int v = 0; v < fft.height(); ++v) {
                for (int u = 0; u <= fft.width() / 2; ++u) {
                    worst = std::max(
                        worst, std::abs(frequency(fft, spectrum.data(), v, u) -
                                        expected[static_cast<std::size_t>(v * fft.width() + u)]));
                }
            }
            EXPECT_LT(worst, tolerance(fft.width(), fft.height()));
            EXPECT_TRUE(spectrum.intact());
            EXPECT_TRUE(scratch.intact());
        }
    }
}

TEST(RealFft2D, AgreesWithTheReferenceForAllSizesUpToTenTwentyFour) {
    for (int orderX = 1; orderX <= 10; ++orderX) {
        for (int orderY = 0; orderY <= 10; ++orderY) {
            SCOPED_TRACE(testing::Message() << "orders " << orderX << ", " << orderY);
            const RealFft2D fft(orderX, orderY);
            const Plane image = randomImage(fft.width(), fft.height());
            const Buffer spectrum(fft.spectrumFloats());
            const Buffer scratch(fft.scratchFloats());
            forward(fft, image, spectrum.data(), scratch.data());
            const auto expected = byReference(image);
            double worst = 0.0;
            for (int v = 0; v < fft.height(); ++v) {
                for (int u = 0; u <= fft.width() / 2; ++u) {
                    const std::complex<double> reference(
                        expected[static_cast<std::size_t>(v) *
                                     static_cast<std::size_t>(fft.width() / 2 + 1) +
                                 static_cast<std::size_t>(u)]);
                    worst = std::max(worst,
                                     std::abs(frequency(fft, spectrum.data(), v, u) - reference));
                }
            }
            EXPECT_LT(worst, 2 * tolerance(fft.width(), fft.height()));
            EXPECT_TRUE(spectrum.intact());
            EXPECT_TRUE(scratch.intact());
        }
    }
}

TEST(RealFft2D, InverseOfForwardReturnsTheImage) {
    for (int orderX = 0; orderX <= 10; ++orderX) {
        for (int orderY = 0; orderY <= 10; ++orderY) {
            SCOPED_TRACE(testing::Message() << "orders " << orderX << ", " << orderY);
            const RealFft2D fft(orderX, orderY);
            const Plane image = randomImage(fft.width(), fft.height(), 12, 4);
            const Buffer spectrum(fft.spectrumFloats());
            const Buffer scratch(fft.scratchFloats());
            forward(fft, image, spectrum.data(), scratch.data());
            Plane back(fft.width(), fft.height(), 7, 1);
            inverse(fft, spectrum.data(), back, scratch.data());
            float worst = 0.0f;
            for (int y = 0; y < fft.height(); ++y) {
                for (int x = 0; x < fft.width(); ++x) {
                    worst = std::max(worst, std::abs(back.at(x, y) - image.at(x, y)));
                }
            }
            EXPECT_LT(worst, 2e-6f);
            EXPECT_TRUE(back.intact());
            EXPECT_TRUE(spectrum.intact());
            EXPECT_TRUE(scratch.intact());
        }
    }
}

TEST(RealFft2D, ImpulseHasAFlatSpectrum) {
    const RealFft2D fft(6, 5);
    Plane image(64, 32);
    image.fill([] { return 0.0f; });
    image.set(0, 0, 1.0f);
    const Buffer spectrum(fft.spectrumFloats());
    const Buffer scratch(fft.scratchFloats());
    forward(fft, image, spectrum.data(), scratch.data());
    for (int v = 0; v < 32; ++v) {
        for (int u = 0; u <= 32; ++u) {
            ASSERT_EQ(frequency(fft, spectrum.data(), v, u), 1.0) << v << ", " << u;
        }
    }
}

TEST(RealFft2D, EveryProcessorVariantGivesTheSameBits) {
    for (const auto& [orderX, orderY] :
         {std::pair{0, 3}, {1, 1}, {3, 0}, {4, 6}, {5, 4}, {6, 5}, {7, 8}, {8, 8}, {9, 10}}) {
        SCOPED_TRACE(testing::Message() << "orders " << orderX << ", " << orderY);
        const RealFft2D fft(orderX, orderY);
        const Plane image = randomImage(fft.width(), fft.height(), 5, 3);
        std::vector<float> firstSpectrum;
        std::unique_ptr<Plane> firstImage;
        forEachTarget([&] {
            const Buffer spectrum(fft.spectrumFloats());
            const Buffer scratch(fft.scratchFloats());
            forward(fft, image, spectrum.data(), scratch.data());
            std::vector<float> values;
            for (int v = 0; v < fft.height(); ++v) {
                for (int u = 0; u <= fft.width() / 2; ++u) {
                    const auto value = frequency(fft, spectrum.data(), v, u);
                    values.push_back(static_cast<float>(value.real()));
                    values.push_back(static_cast<float>(value.imag()));
                }
            }
            Plane back(fft.width(), fft.height(), 3, 2);
            inverse(fft, spectrum.data(), back, scratch.data());
            EXPECT_TRUE(back.intact());
            if (!firstImage) {
                firstSpectrum = values;
                firstImage = std::make_unique<Plane>(back);
                return;
            }
            EXPECT_EQ(
                std::memcmp(values.data(), firstSpectrum.data(), values.size() * sizeof(float)), 0);
            EXPECT_TRUE(back.sameBits(*firstImage));
        });
    }
}

TEST(RealFft2D, RowsOutsideAnImageGiveTheSameSpectrum) {
    const RealFft2D fft(7, 6);
    const Plane image = randomImage(128, 64);
    const Buffer expected(fft.spectrumFloats());
    const Buffer spectrum(fft.spectrumFloats());
    const Buffer scratch(fft.scratchFloats());
    for (int group = 0; group < fft.groupCount(); ++group) {
        fft.forwardRows(image.data(), image.step(), group, expected.data(), scratch.data());
        Plane rows(128, 16, 64);
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 128; ++x) {
                rows.set(x, y, image.at(x, 16 * group + y));
            }
        }
        fft.forwardRowGroup(rows.data(), rows.step(), group, spectrum.data(), scratch.data());
    }
    for (int block = 0; block < fft.blockCount(); ++block) {
        const std::size_t start = static_cast<std::size_t>(block) * fft.blockFloats();
        EXPECT_EQ(std::memcmp(spectrum.data() + start, expected.data() + start, 64 * 32 * 4), 0);
    }
}

TEST(RealFft2D, ThreadsShareOneObject) {
    const RealFft2D fft(6, 6);
    const Plane image = randomImage(64, 64);
    const Buffer expected(fft.spectrumFloats());
    const Buffer scratch(fft.scratchFloats());
    forward(fft, image, expected.data(), scratch.data());
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            const Buffer own(fft.spectrumFloats());
            const Buffer ownScratch(fft.scratchFloats());
            for (int repeat = 0; repeat < 20; ++repeat) {
                forward(fft, image, own.data(), ownScratch.data());
                for (int block = 0; block < fft.blockCount(); ++block) {
                    const std::size_t start = static_cast<std::size_t>(block) * fft.blockFloats();
                    if (std::memcmp(own.data() + start, expected.data() + start, 64 * 32 * 4) !=
                        0) {
                        ++wrong;
                    }
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST(RealFft2D, SpectrumBeyondTheAddressSpaceIsRefusedAtOnce) {
    EXPECT_THROW(RealFft2D(30, 30), std::bad_alloc);
}

TEST(RealFft2D, ImageOfNaNWritesNothingOutOfBounds) {
    const RealFft2D fft(5, 5);
    Plane image(32, 32);
    image.fill([] { return std::nanf(""); });
    const Buffer spectrum(fft.spectrumFloats());
    const Buffer scratch(fft.scratchFloats());
    forward(fft, image, spectrum.data(), scratch.data());
    EXPECT_TRUE(std::isnan(frequency(fft, spectrum.data(), 3, 4).real()));
    Plane back(32, 32);
    inverse(fft, spectrum.data(), back, scratch.data());
    EXPECT_TRUE(std::isnan(back.at(7, 7)));
    EXPECT_TRUE(back.intact());
}

} // namespace
