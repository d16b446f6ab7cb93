// The accumulation of the kernel's normal equations, and their solution.
//
// Accumulation: multiply-adds that the result needs (the symmetric half and the right-hand side,
// six orders) per second, against two references measured in the same run, on the same thread:
//   peak   16-bit multiply-adds into 32-bit sums from registers only, the limit of this machine
//   plain  the definition as a loop over doubles: the whole matrix, one pixel at a time
// The machine may be shared. Therefore accumulation and references alternate, ratios are formed
// from totals, and work on one thread is measured in processor time. Runs on two threads are
// measured by the clock: on a busy machine they show how busy it is.
//
// Solution: our Cholesky method against cv::solve with DECOMP_CHOLESKY and with DECOMP_SVD, on the
// equations of a noise image.

#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"
#include "velimproclib/veldeblurcv/estimation/solver/NormalEquations.h"
#include "velimproclib/veldeblurcv/estimation/solver/solvePositiveDefinite.h"
#include "velimproclib/veldeblurcv/estimation/solver/sumEquations.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <omp.h>
#include <random>
#include <vector>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "bench/kernelSolver.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

/// Runs `rounds` rounds of independent multiply-adds in registers.
/// @return the number of multiply-adds of single lanes
std::int64_t multiplyInRegisters(std::int64_t rounds, std::int32_t* sink) {
#if HWY_TARGET == HWY_SCALAR
    std::int32_t sums[8] = {};
    volatile std::int16_t seed = 3;
    const std::int32_t factor = seed;
    for (std::int64_t i = 0; i < rounds; ++i) {
        for (std::int32_t& sum : sums) {
            sum = static_cast<std::int32_t>(static_cast<std::uint32_t>(sum + factor * factor));
            benchmark::DoNotOptimize(sum);
        }
    }
    *sink = sums[0];
    return rounds * 8;
#else
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::CappedTag<std::int32_t, 16> d32;
    const hn::Repartition<std::int16_t, decltype(d32)> d16;
    using Sum = hn::Vec<decltype(d32)>;
    constexpr int kSums = 12;
    volatile std::int16_t seed = 3;
    const auto factor = hn::Set(d16, seed);
    Sum sums[kSums];
    Sum others[kSums];
    HWY_UNROLL(12)
    for (int s = 0; s < kSums; ++s) {
        sums[s] = hn::Set(d32, s);
        others[s] = hn::Zero(d32);
    }
    for (std::int64_t i = 0; i < rounds; ++i) {
        HWY_UNROLL(12)
        for (int s = 0; s < kSums; ++s) {
            // The factor changes, so that the products are not computed only once.
            sums[s] = hn::ReorderWidenMulAccumulate(d32, factor, hn::BitCast(d16, sums[s]), sums[s],
                                                    others[s]);
        }
    }
    Sum all = sums[0];
    for (int s = 1; s < kSums; ++s) {
        all = hn::Add(all, sums[s]);
    }
    *sink = hn::GetLane(all);
    return rounds * kSums * static_cast<std::int64_t>(hn::Lanes(d16));
#endif
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
HWY_EXPORT(multiplyInRegisters);

namespace {

std::int64_t runInRegisters(std::int64_t rounds, std::int32_t* sink) {
    return HWY_DYNAMIC_DISPATCH(multiplyInRegisters)(rounds, sink);
}

} // namespace
} // namespace vel

namespace {

double processorSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

double clockSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Work and its time, summed over a run.
struct Rate {
    double (*now)() = processorSeconds;
    double work = 0.0;
    double seconds = 0.0;

    template <class Action>
    void measure(Action&& action) {
        const double start = now();
        work += action();
        seconds += now() - start;
    }
    double perSecond() const { return work / seconds; }
};

double peak() {
    std::int32_t sink = 0;
    const auto done = static_cast<double>(vel::runInRegisters(1 << 19, &sink));
    benchmark::DoNotOptimize(sink);
    return done;
}

cv::Mat noise(int side, unsigned seed) {
    std::mt19937 random(seed);
    cv::Mat image(side, side, CV_8UC1);
    for (int row = 0; row < side; ++row) {
        std::generate_n(image.ptr(row), side,
                        [&] { return static_cast<unsigned char>(random() & 255U); });
    }
    return image;
}

double usefulProducts(int side, int pixels) {
    const double n = side * side;
    return 6.0 * pixels * (n * (n + 1.0) / 2.0 + n);
}

/// The definition for `pixels` pixels.
/// @return the number of products that the result needs
double plainLoop(const cv::Mat& image, int side, int pixels, std::vector<double>& matrix,
                 std::vector<double>& term) {
    const auto n = static_cast<std::size_t>(side * side);
    std::vector<double> x(6 * n);
    for (int pixel = 0; pixel < pixels; ++pixel) {
        for (int i = 0; i < side; ++i) {
            for (int j = 0; j < side; ++j) {
                const unsigned char* p = image.ptr(j) + i + pixel % 32;
                const unsigned char* q = image.ptr(j + 1) + i + pixel % 32;
                const unsigned char* r = image.ptr(j + 2) + i + pixel % 32;
                const auto u = static_cast<std::size_t>(i * side + j);
                x[u] = p[0];
                x[n + u] = p[1] - p[0];
                x[2 * n + u] = q[0] - p[0];
                x[3 * n + u] = p[2] - 2 * p[1] + p[0];
                x[4 * n + u] = r[0] - 2 * q[0] + p[0];
                x[5 * n + u] = q[1] - p[1] - q[0] + p[0];
            }
        }
        for (std::size_t u = 0; u < n; ++u) {
            for (std::size_t v = 0; v < n; ++v) {
                double sum = 0.0;
                for (std::size_t d = 0; d < 6; ++d) {
                    sum += x[d * n + u] * x[d * n + v];
                }
                term[u * n + v] = sum;
            }
        }
        for (std::size_t u = 0; u < n * n; ++u) {
            matrix[u] += term[u];
        }
    }
    benchmark::DoNotOptimize(matrix.data());
    return usefulProducts(side, pixels);
}

/// A mask of scattered pixels, 2000 per unit of the kernel's side, as many as the estimator
/// selects.
cv::Mat scatteredMask(int imageSide, int kernelSide) {
    std::mt19937 random(9);
    cv::Mat mask = cv::Mat::zeros(imageSide, imageSide, CV_8UC1);
    std::uniform_int_distribution<int> place(kernelSide + 2, imageSide - kernelSide - 3);
    for (int selected = 0; selected < 2000 * kernelSide;) {
        unsigned char& m = mask.at<unsigned char>(place(random), place(random));
        selected += m == 0 ? 1 : 0;
        m = 1;
    }
    return mask;
}

/// The normal equations of a square kernel.
struct Equations {
    int side;
    cv::Mat matrix;
    cv::Mat rightHand;
    int pixels = 0;

    explicit Equations(int kernelSide)
        : side(kernelSide), matrix(cv::Mat::zeros(side * side, side * side, CV_64FC1)),
          rightHand(cv::Mat::zeros(side * side, 1, CV_64FC1)) {}

    void sum(const cv::Mat& sharp, const cv::Mat& blurred, const cv::Mat& mask) {
        vel::CProgressSpan silent;
        pixels = static_cast<int>(vel::sumEquations(
            {sharp, blurred, mask}, {cv::Size(side, side), sharp.size(), side / 2, side / 2},
            silent, {matrix.ptr<double>(), matrix.step1(), rightHand.ptr<double>()}));
    }
};

void accumulate(benchmark::State& state) {
    const int side = static_cast<int>(state.range(0));
    const int threads = static_cast<int>(state.range(1));
    constexpr int kImageSide = 1024;
    const cv::Mat image = noise(kImageSide, 1);
    const cv::Mat blur = noise(kImageSide, 2);
    const cv::Mat mask = scatteredMask(kImageSide, side);
    Equations equations(side);
    const auto n = static_cast<std::size_t>(side * side);
    std::vector<double> matrix(n * n);
    std::vector<double> term(n * n);
    const int plainPixels = std::max(1, static_cast<int>(20'000'000 / (n * n)));

    Rate peakRate;
    Rate plainRate;
    Rate rate{threads == 1 ? processorSeconds : clockSeconds};
    double lastSeconds = 0.0;
    const int before = omp_get_max_threads();
    omp_set_num_threads(threads);
    for (auto _ : state) {
        peakRate.measure(peak);
        rate.measure([&] {
            equations.sum(image, blur, mask);
            return usefulProducts(side, equations.pixels);
        });
        peakRate.measure(peak);
        plainRate.measure([&] { return plainLoop(image, side, plainPixels, matrix, term); });
        state.SetIterationTime(rate.seconds - lastSeconds);
        lastSeconds = rate.seconds;
    }
    omp_set_num_threads(before);
    state.counters["Gmac/s"] = rate.perSecond() * 1e-9;
    state.counters["peak_Gmac/s"] = peakRate.perSecond() * 1e-9;
    state.counters["of_peak_per_core"] = rate.perSecond() / peakRate.perSecond() / threads;
    state.counters["times_plain"] = rate.perSecond() / plainRate.perSecond();
    state.counters["pixels"] = equations.pixels;
}
BENCHMARK(accumulate)
    ->ArgNames({"side", "threads"})
    ->ArgsProduct({{9, 17, 31, 45}, {1, 2}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0);

void solve(benchmark::State& state) {
    const int side = static_cast<int>(state.range(0));
    const cv::Mat image = noise(256, 3);
    Equations equations(side);
    equations.sum(image, noise(256, 4), cv::Mat(image.size(), CV_8UC1, cv::Scalar(1)));
    cv::Mat x(side * side, 1, CV_64FC1);
    const auto reference = [&](int method) {
        cv::solve(equations.matrix, equations.rightHand, x, method);
        benchmark::DoNotOptimize(x.data);
        return 1.0;
    };
    Rate rate;
    Rate cholesky;
    Rate singular;
    double lastSeconds = 0.0;
    for (auto _ : state) {
        rate.measure([&] {
            benchmark::DoNotOptimize(
                vel::solvePositiveDefinite(equations.matrix, equations.rightHand, x));
            return 1.0;
        });
        cholesky.measure([&] { return reference(cv::DECOMP_CHOLESKY); });
        singular.measure([&] { return reference(cv::DECOMP_SVD); });
        state.SetIterationTime(rate.seconds - lastSeconds);
        lastSeconds = rate.seconds;
    }
    state.counters["cholesky_ms"] = 1e3 / cholesky.perSecond();
    state.counters["singular_ms"] = 1e3 / singular.perSecond();
    state.counters["times_cholesky"] = rate.perSecond() / cholesky.perSecond();
    state.counters["times_singular"] = rate.perSecond() / singular.perSecond();
}
BENCHMARK(solve)
    ->ArgName("side")
    ->Arg(9)
    ->Arg(17)
    ->Arg(31)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

} // namespace

BENCHMARK_MAIN();
#endif
