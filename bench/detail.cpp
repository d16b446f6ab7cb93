// Measures the detail stage and its solver, which takes most of its time. `threads` is the number
// of threads of a region.
//
// smoother: one half of 1024 by 536 pixels, all 20 steps, including set-up and conversions.
// `ofBound` is its time divided by the time to move the bytes that the steps must move: 13 planes
// of doubles per step (4 for the product with the matrix, 4 for the residual, 5 for the solution
// and the direction). The reference is a memcpy by the same number of threads in a working set of
// the same seven planes.
//
// stage: a square tile; `copies` is its time divided by that of a memcpy of its plane.
//
// Wall time depends on the load of the machine; `cpuMs` is the processor time of all threads.
//
//   bench_detail --benchmark_min_time=2

#include "bench/alternate.h"
#include "velimproclib/veldeblurcv/detail/DetailStage.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <omp.h>
#include <opencv2/core.hpp>
#include <random>
#include <utility>
#include <vector>

namespace {

constexpr int kSteps = 20;

/// Waves, a step and noise: the iteration is far from converged after all steps.
cv::Mat picture(int width, int height) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> noise(-0.05f, 0.05f);
    cv::Mat plane(height, width, CV_32FC1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto wave = std::sin(0.05f * static_cast<float>(x + y));
            plane.at<float>(y, x) = 0.5f + (x < width / 2 ? 0.2f : -0.2f) * wave + noise(random);
        }
    }
    return plane;
}

/// Runs work and adds up its processor time.
template <class Work>
class Timed {
public:
    explicit Timed(Work work) : m_work(std::move(work)) {}

    void operator()() {
        const std::clock_t start = std::clock();
        m_work();
        m_ticks += static_cast<double>(std::clock() - start);
        ++m_runs;
    }
    double milliseconds() const { return 1e3 * m_ticks / CLOCKS_PER_SEC / m_runs; }

private:
    Work m_work;
    double m_ticks = 0.0;
    int m_runs = 0;
};

vel::GIMG<float> over(cv::Mat& plane) {
    return {plane.cols, plane.rows, plane.data, static_cast<int>(plane.step)};
}

/// Copies memory on all threads of a region.
class Copier {
public:
    explicit Copier(std::size_t bytes) : m_from(bytes, 1), m_to(bytes, 2) {}

    void copy() {
        const int parts = omp_get_max_threads();
#pragma omp parallel for
        for (int part = 0; part < parts; ++part) {
            const std::size_t begin = offset(part, parts);
            std::memcpy(m_to.data() + begin, m_from.data() + begin,
                        offset(part + 1, parts) - begin);
        }
    }

private:
    std::size_t offset(int part, int parts) const {
        return m_from.size() * static_cast<std::size_t>(part) / static_cast<std::size_t>(parts);
    }

    std::vector<unsigned char> m_from;
    std::vector<unsigned char> m_to;
};

void smoother(benchmark::State& state) {
    omp_set_num_threads(static_cast<int>(state.range(0)));
    const cv::Mat source = picture(1024, 536);
    cv::Mat rhs;
    cv::Mat io;
    cv::Mat guide;
    vel::CEdgeSmoother workspace;
    // A copy reads one byte and writes one: it copies half of the 7 planes to the other half, and a
    // step that moves 13 planes corresponds to 6.5 copied planes.
    const std::size_t planeBytes = source.total() * sizeof(double);
    Copier copier(planeBytes * 7 / 2);
    constexpr int kCopies = kSteps * 13 / 7;
    Timed work([&] {
        source.copyTo(rhs);
        source.copyTo(io);
        source.copyTo(guide);
        auto b = over(rhs);
        auto u = over(io);
        auto g = over(guide);
        workspace.smooth(b, u, g, 0.05f, 1.2f, true, kSteps);
    });
    vel::bench::runAgainst(state, "ofBound", work, [&] {
        for (int i = 0; i < kCopies; ++i) {
            copier.copy();
        }
    });
    state.counters["cpuMs"] = work.milliseconds();
}
BENCHMARK(smoother)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

void stage(benchmark::State& state) {
    const int side = static_cast<int>(state.range(0));
    omp_set_num_threads(static_cast<int>(state.range(1)));
    const cv::Mat source = picture(side, side);
    cv::Mat luminance;
    vel::CDetailStage detailStage(side, side);
    Timed work([&] {
        source.copyTo(luminance);
        detailStage.Proc(luminance, 0.5f, 0.3f);
    });
    vel::bench::runAgainstCopy(state, source.total() * sizeof(float), work);
    state.counters["cpuMs"] = work.milliseconds();
}
BENCHMARK(stage)
    ->ArgNames({"side", "threads"})
    ->ArgsProduct({{512, 1024}, {1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

} // namespace

BENCHMARK_MAIN();
