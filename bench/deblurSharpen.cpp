// Measures ornDeblurSharpen with a disc of radius 5.
//
//   deblurSharpen  megapixels per second on one and on two threads, measured alternately in one
//   run,
//                  and the speed-up; for stages 1 and 2, then for all three
//   shares         the shares of the stages in the time of a call, in percent. Each iteration makes
//                  calls with one, two, three... stages; the share of a stage is the time that it
//                  adds to the median. `tiles` is loading, colours and storing, `deconv` the
//                  deconvolution of three planes, `limit` the limiter, `edge` edge sharpening and
//                  `detail` detail enhancement
//
//   bench_deblurSharpen --benchmark_min_time=0.1
#include "bench/alternate.h"
#include "bench/texturedPixels.h"
#include "velorncore10.h"

#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstddef>
#include <omp.h>
#include <opencv2/core.hpp>
#include <vector>

namespace {

constexpr float kDiscRadius = 5.0f;

/// The last stage that runs; all earlier stages run too.
enum Stages { kTiles, kDeconvolution, kLimiter, kEdges, kDetail, kStagesCount };

struct Call {
    Call(int width, int height)
        : source(texturedPixels(width, height)), target(source.size()),
          kernelValues(121), kernel{0, 0, 0, 0, kernelValues.data()},
          image{psC3U8, source.data(), 3 * width, target.data(), 3 * width, width, height} {
        ornCreateKernel(1, kDiscRadius, 0.0f, &kernel);
    }

    /// Seconds of one call on `threads` threads.
    double run(int threads, int stages) {
        omp_set_num_threads(threads);
        cv::setNumThreads(threads);
        ProgressRecord progress{100, 100, nullptr, nullptr, 0};
        const auto start = std::chrono::steady_clock::now();
        ornDeblurSharpen(&progress, &image, &kernel, stages >= kDeconvolution ? 1 : 0, 10000.0f,
                         0.5f, stages >= kLimiter ? 0.5f : 0.0f, 0.85f,
                         stages >= kEdges ? 1.5f : 0.0f, stages >= kEdges ? 1.2f : 1.0f, 0.005f,
                         stages >= kDetail ? 0.2f : 0.0f, stages >= kDetail ? 0.1f : 0.0f);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

    std::vector<unsigned char> source;
    std::vector<unsigned char> target;
    std::vector<float> kernelValues;
    KernelRecord kernel;
    ImageRecord image;
};

double megapixelsOf(int width, int height) {
    return 1e-6 * width * height;
}

void deblurSharpen(benchmark::State& state) {
    const auto width = static_cast<int>(state.range(0));
    const auto height = static_cast<int>(state.range(1));
    const int stages = state.range(2) == 3 ? kDetail : kEdges;
    Call call(width, height);
    double oneThread = 0.0;
    double twoThreads = 0.0;
    for (auto _ : state) {
        const double one = call.run(1, stages);
        const double two = call.run(2, stages);
        oneThread += one;
        twoThreads += two;
        state.SetIterationTime(one + two);
    }
    const double megapixels = megapixelsOf(width, height) * static_cast<double>(state.iterations());
    state.counters["MPix/s_1thread"] = megapixels / oneThread;
    state.counters["MPix/s_2threads"] = megapixels / twoThreads;
    state.counters["speedup"] = oneThread / twoThreads;
}

BENCHMARK(deblurSharpen)
    ->ArgNames({"width", "height", "stages"})
    ->ArgsProduct({{1024}, {1024}, {2, 3}})
    ->ArgsProduct({{3000}, {2000}, {2, 3}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

void shares(benchmark::State& state) {
    constexpr int kWidth = 3000;
    constexpr int kHeight = 2000;
    constexpr std::array<const char*, kStagesCount> kNames{"tiles", "deconv", "limit", "edge",
                                                           "detail"};
    const auto threads = static_cast<int>(state.range(0));
    Call call(kWidth, kHeight);
    std::array<std::vector<double>, kStagesCount> times;
    for (auto _ : state) {
        for (int stages = kTiles; stages <= kDetail; ++stages) {
            times[static_cast<std::size_t>(stages)].push_back(call.run(threads, stages));
        }
        state.SetIterationTime(times[kDetail].back());
    }
    const double whole = vel::bench::median(times[kDetail]);
    double before = 0.0;
    for (std::size_t i = 0; i < times.size(); ++i) {
        const double upToThis = vel::bench::median(times[i]);
        state.counters[kNames[i]] = 100.0 * (upToThis - before) / whole;
        before = upToThis;
    }
    state.counters["MPix/s"] = megapixelsOf(kWidth, kHeight) / whole;
}

BENCHMARK(shares)->ArgName("threads")->Arg(1)->Arg(2)->Iterations(3)->UseManualTime()->Unit(
    benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
