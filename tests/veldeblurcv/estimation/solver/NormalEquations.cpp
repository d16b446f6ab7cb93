#include "velimproclib/veldeblurcv/estimation/solver/NormalEquations.h"

#include "tests/support/EachTarget.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <vector>

namespace {

using vel::CNormalEquations;
using vel::NormalSums;

/// The samples of one pixel, in blocks of memory of their exact size, so that a sanitizer sees any
/// read beyond them. `observed` holds 3 by 3 samples.
struct Pixel {
    std::vector<std::uint8_t> patch;
    std::vector<std::uint8_t> observed;
};

std::vector<Pixel> randomPixels(int width, int height, int count, std::mt19937& random) {
    std::vector<Pixel> pixels(static_cast<std::size_t>(count));
    for (Pixel& pixel : pixels) {
        pixel.patch.resize(static_cast<std::size_t>((width + 2) * (height + 2)));
        pixel.observed.resize(9);
        // Extremes are frequent, so that sums become large in both signs.
        const auto level = [&] {
            const unsigned v = static_cast<unsigned>(random() % 512);
            return static_cast<std::uint8_t>(v < 128 ? 0U : std::min(v - 128U, 255U));
        };
        std::generate(pixel.patch.begin(), pixel.patch.end(), level);
        std::generate(pixel.observed.begin(), pixel.observed.end(), level);
    }
    return pixels;
}

std::array<std::int64_t, 6> derivatives(const std::uint8_t* p, int step) {
    const auto at = [&](int r, int c) { return std::int64_t{p[r * step + c]}; };
    return {at(0, 0),
            at(0, 1) - at(0, 0),
            at(1, 0) - at(0, 0),
            at(0, 2) - 2 * at(0, 1) + at(0, 0),
            at(2, 0) - 2 * at(1, 0) + at(0, 0),
            at(1, 1) - at(0, 1) - at(1, 0) + at(0, 0)};
}

std::int64_t product(const std::array<std::int64_t, 6>& a, const std::array<std::int64_t, 6>& b) {
    return std::inner_product(a.begin(), a.end(), b.begin(), std::int64_t{0});
}

struct PlainSums {
    std::vector<std::int64_t> matrix;
    std::vector<std::int64_t> rightHand;
};

PlainSums plainSums(int width, int height, const std::vector<Pixel>& pixels) {
    const auto n = static_cast<std::size_t>(width * height);
    PlainSums sums{std::vector<std::int64_t>(n * n), std::vector<std::int64_t>(n)};
    std::vector<std::array<std::int64_t, 6>> x(n);
    for (const Pixel& pixel : pixels) {
        for (int i = 0; i < width; ++i) {
            for (int j = 0; j < height; ++j) {
                x[static_cast<std::size_t>(i * height + j)] =
                    derivatives(pixel.patch.data() + j * (width + 2) + i, width + 2);
            }
        }
        const std::array<std::int64_t, 6> y = derivatives(pixel.observed.data(), 3);
        for (std::size_t u = 0; u < n; ++u) {
            sums.rightHand[u] += product(x[u], y);
            for (std::size_t v = 0; v < n; ++v) {
                sums.matrix[u * n + v] += product(x[u], x[v]);
            }
        }
    }
    return sums;
}

/// Sums the pixels in batches of at most `batch`, the blocks in random order, and compares all
/// sums.
void expectPlainSums(int width, int height, const std::vector<Pixel>& pixels, int batch,
                     const PlainSums& expected, std::mt19937& random) {
    constexpr double kCanary = -0.25;
    const auto n = static_cast<std::size_t>(width * height);
    const std::size_t stride = n + 3;
    std::vector<double> matrix(n * stride, 0.0);
    for (std::size_t row = 0; row < n; ++row) {
        std::fill_n(matrix.begin() + static_cast<std::ptrdiff_t>(row * stride + n), 3, kCanary);
    }
    std::vector<double> rightHand(n + 8, kCanary);
    std::fill_n(rightHand.begin(), n, 0.0);
    const NormalSums sums{matrix.data(), stride, rightHand.data()};

    CNormalEquations equations(width, height, 3);
    std::vector<std::int64_t> blocks(static_cast<std::size_t>(equations.blockCount()));
    std::iota(blocks.begin(), blocks.end(), 0);
    batch = std::min(batch, equations.batchPixels());
    for (std::size_t first = 0; first < pixels.size(); first += static_cast<std::size_t>(batch)) {
        const int count =
            static_cast<int>(std::min(static_cast<std::size_t>(batch), pixels.size() - first));
        for (int slot = 0; slot < count; ++slot) {
            const Pixel& pixel = pixels[first + static_cast<std::size_t>(slot)];
            equations.pack(slot % 3, slot, pixel.patch.data(), width + 2, pixel.observed.data(), 3);
        }
        std::shuffle(blocks.begin(), blocks.end(), random);
        for (const std::int64_t block : blocks) {
            equations.accumulate(block, count, sums);
        }
    }
    for (const std::int64_t block : blocks) {
        equations.mirror(block, sums);
    }
    for (std::size_t u = 0; u < n; ++u) {
        ASSERT_EQ(rightHand[u], static_cast<double>(expected.rightHand[u])) << u;
        for (std::size_t v = 0; v < n; ++v) {
            ASSERT_EQ(matrix[u * stride + v], static_cast<double>(expected.matrix[u * n + v]))
                << u << ' ' << v;
        }
        for (std::size_t pad = n; pad < stride; ++pad) {
            ASSERT_EQ(matrix[u * stride + pad], kCanary);
        }
    }
    EXPECT_TRUE(std::all_of(rightHand.begin() + static_cast<std::ptrdiff_t>(n), rightHand.end(),
                            [](double value) { return value == kCanary; }));
}

TEST(NormalEquations, SumsEqualThePlainLoopForEveryKernelShape) {
    std::mt19937 random(71);
    std::vector<std::array<int, 2>> shapes{{1, 1},  {2, 2}, {1, 40}, {40, 1},
                                           {63, 1}, {8, 8}, {3, 67}};
    for (int i = 0; i < 12; ++i) {
        shapes.push_back(
            {static_cast<int>(random() % 14) + 1, static_cast<int>(random() % 14) + 1});
    }
    for (const auto& [width, height] : shapes) {
        SCOPED_TRACE(testing::Message() << width << " columns, " << height << " rows");
        const std::vector<Pixel> pixels =
            randomPixels(width, height, static_cast<int>(random() % 20) + 1, random);
        const PlainSums expected = plainSums(width, height, pixels);
        vel::test::forEachTarget(
            [&, w = width, h = height] { expectPlainSums(w, h, pixels, 1000, expected, random); });
    }
}

TEST(NormalEquations, BatchesAndChunksOfAnyLengthGiveTheSameSums) {
    std::mt19937 random(72);
    const std::vector<Pixel> pixels = randomPixels(5, 5, 331, random);
    const PlainSums expected = plainSums(5, 5, pixels);
    for (const int batch : {1, 63, 64, 65, 128, 200, 331}) {
        vel::test::forEachTarget([&] { expectPlainSums(5, 5, pixels, batch, expected, random); });
    }
}

TEST(NormalEquations, BatchesShrinkAsKernelsGrowButNeverBelowAChunk) {
    EXPECT_GE(CNormalEquations(1, 1, 1).batchPixels(), CNormalEquations(31, 31, 1).batchPixels());
    EXPECT_GT(CNormalEquations(31, 31, 1).batchPixels(), 64);
    EXPECT_EQ(CNormalEquations(151, 151, 1).batchPixels(), 64);
}

} // namespace
