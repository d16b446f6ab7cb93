// The whole of ornDeblurSharpen: megapixels per second on one and on two threads, and the speed-up
// between them, measured alternately in one run.
#include "velorncore10.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstddef>
#include <omp.h>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

namespace {

constexpr float kDiscRadius = 5.0f;

std::vector<unsigned char> texturedPicture(int width, int height) {
    std::vector<unsigned char> pixels(static_cast<std::size_t>(width) *
                                      static_cast<std::size_t>(height) * 3);
    std::mt19937 random(1);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::size_t block = (i / 3 / 16 + i / (static_cast<std::size_t>(width) * 48)) % 7;
        pixels[i] = static_cast<unsigned char>(block * 30 + random() % 16);
    }
    return pixels;
}

struct Call {
    Call(int width, int height)
        : source(texturedPicture(width, height)), target(source.size()),
          kernelValues(121), kernel{0, 0, 0, 0, kernelValues.data()},
          image{psC3U8, source.data(), 3 * width, target.data(), 3 * width, width, height} {
        ornCreateKernel(1, kDiscRadius, 0.0f, &kernel);
    }

    /// Seconds of one call on `threads` threads.
    double run(int threads) {
        omp_set_num_threads(threads);
        cv::setNumThreads(threads);
        ProgressRecord progress{100, 100, nullptr, nullptr, 0};
        const auto start = std::chrono::steady_clock::now();
        ornDeblurSharpen(&progress, &image, &kernel, 1, 10000.0f, 0.5f, 0.5f, 0.85f, 1.5f, 1.2f,
                         0.005f, 0.0f, 0.0f);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

    std::vector<unsigned char> source;
    std::vector<unsigned char> target;
    std::vector<float> kernelValues;
    KernelRecord kernel;
    ImageRecord image;
};

void deblurSharpen(benchmark::State& state) {
    const auto width = static_cast<int>(state.range(0));
    const auto height = static_cast<int>(state.range(1));
    Call call(width, height);
    double oneThread = 0.0;
    double twoThreads = 0.0;
    for (auto _ : state) {
        const double one = call.run(1);
        const double two = call.run(2);
        oneThread += one;
        twoThreads += two;
        state.SetIterationTime(one + two);
    }
    const double megapixels = 1e-6 * width * height * static_cast<double>(state.iterations());
    state.counters["MPix/s_1thread"] = megapixels / oneThread;
    state.counters["MPix/s_2threads"] = megapixels / twoThreads;
    state.counters["speedup"] = oneThread / twoThreads;
}

BENCHMARK(deblurSharpen)
    ->Args({1024, 1024})
    ->Args({3000, 2000})
    ->ArgNames({"width", "height"})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
