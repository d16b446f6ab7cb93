// The steps that the restoration takes for one plane of a tile, on one thread, against the core's
// deconvolution of the same tile (`CDeconvHL` on one thread). Each iteration times both, one after
// the other, in processor time of the thread: `core` is the core's time, `ratio` the quotient of
// the medians, `msPerMegapixel` the step's time.
//
//   bench_restorationTile --benchmark_min_time=1

#include "restoration/deconvolution/deconvolveHyperLaplacian.h"
#include "restoration/deconvolution/deconvolveQuadratic.h"
#include "restoration/deconvolution/estimateUnknown.h"
#include "restoration/deconvolution/taperEdges.h"
#include "restoration/finishing/DetailEnhancer.h"
#include "restoration/finishing/EdgeSharpener.h"
#include "restoration/finishing/OvershootLimiter.h"
#include "restoration/threads/SerialOpenMp.h"
#include "restoration/tiles/joinEdges.h"
#include "velimproclib/veldeblurcv/deconvolution/DeconvHL.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

namespace {

using namespace restoration;

constexpr int kKernelSide = 13;
constexpr HyperLaplacian kPrior{4000.0f, 0.5f};

double threadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

Kernel disc() {
    Kernel kernel{kKernelSide, kKernelSide, {}};
    for (int y = 0; y < kKernelSide; ++y) {
        for (int x = 0; x < kKernelSide; ++x) {
            const int dx = x - kKernelSide / 2;
            const int dy = y - kKernelSide / 2;
            kernel.values.push_back(dx * dx + dy * dy < 27 ? 1.0f : 0.0f);
        }
    }
    const auto inside =
        static_cast<float>(std::count(kernel.values.begin(), kernel.values.end(), 1.0f));
    for (float& value : kernel.values) {
        value /= inside;
    }
    return kernel;
}

/// Rectangles with a little noise: most gradients shrink to 0, as in photographs.
Plane scene(int side) {
    Plane plane(side, side);
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0.0f, 0.004f);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            plane.row(y)[x] = 0.3f + 0.15f * static_cast<float>((x / 40 + y / 30) % 4);
            plane.row(y)[x] += noise(random);
        }
    }
    return plane;
}

struct Bench {
    explicit Bench(int side)
        : blur(disc(), side), scratch(side), window(side - kKernelSide + 1), source(scene(side)),
          y(side, side), x(side, side), known(side, side) {
        for (int row = 0; row < window; ++row) {
            std::fill_n(known.row(row), window, std::uint8_t{1});
        }
        load();
    }

    /// The tile as the loader leaves it.
    void load() {
        std::ranges::copy(source.values(), y.values().begin());
        joinEdges(y, window, window);
    }

    BlurSpectrum blur;
    TileScratch scratch;
    int window;
    Plane source;
    Plane y;
    Plane x;
    Mask known;
    Cancellation cancellation;
};

struct Core {
    explicit Core(int side) : kernel(disc()), in(side, side, CV_32FC1), out(side, side, CV_32FC1) {
        const cv::Mat shape(kKernelSide, kKernelSide, CV_32FC1, kernel.values.data());
        const Plane plane = scene(side);
        std::ranges::copy(plane.values(), in.ptr<float>());
        deconv.setup(shape, {}, in.size(), kPrior.strength, kPrior.exponent, true);
    }

    Kernel kernel;
    cv::Mat in;
    cv::Mat out;
    vel::CDeconvHL deconv;
};

double median(std::vector<double>& times) {
    std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2),
                     times.end());
    return times[times.size() / 2];
}

void run(benchmark::State& state, auto&& step) {
    const int side = static_cast<int>(state.range(0));
    const SerialOpenMp serial;
    Bench bench(side);
    Core core(side);
    std::vector<double> times;
    std::vector<double> coreTimes;
    for (auto _ : state) {
        bench.load();
        const double start = threadSeconds();
        step(bench);
        const double middle = threadSeconds();
        core.deconv.Proc(core.in, core.out);
        times.push_back(middle - start);
        coreTimes.push_back(threadSeconds() - middle);
        state.SetIterationTime(times.back());
    }
    const double coreTime = median(coreTimes);
    const double time = median(times);
    const double megapixels = 1e-6 * static_cast<double>(side) * static_cast<double>(side);
    state.counters["core"] = coreTime;
    state.counters["ratio"] = time / coreTime;
    state.counters["msPerMegapixel"] = 1e3 * time / megapixels;
}

void taper(benchmark::State& state) {
    run(state,
        [](Bench& b) { taperEdges(b.y, b.window, b.window, b.blur, b.scratch, b.cancellation); });
}

void estimate(benchmark::State& state) {
    run(state, [](Bench& b) { estimateUnknown(b.y, b.known, b.blur, b.scratch, b.cancellation); });
}

void hyperLaplacian(benchmark::State& state) {
    run(state, [](Bench& b) {
        deconvolveHyperLaplacian(b.y, nullptr, b.blur, kPrior, b.x, b.scratch, b.cancellation);
    });
}

void hyperLaplacianMasked(benchmark::State& state) {
    run(state, [](Bench& b) {
        deconvolveHyperLaplacian(b.y, &b.known, b.blur, kPrior, b.x, b.scratch, b.cancellation);
    });
}

void quadratic(benchmark::State& state) {
    run(state, [](Bench& b) {
        deconvolveQuadratic(b.y, b.blur, 0.01f, nullptr, b.x, b.scratch, b.cancellation);
    });
}

void limit(benchmark::State& state) {
    OvershootLimiter limiter(0.5f, kKernelSide);
    run(state, [&](Bench& b) { limiter.limit(b.source, b.y, b.x); });
}

void sharpenEdges(benchmark::State& state) {
    EdgeSharpener sharpener({0.85f, 2.0f, 1.5f, 0.005f});
    run(state, [&](Bench& b) { sharpener.sharpen(b.y, b.x); });
}

void enhanceDetail(benchmark::State& state) {
    DetailEnhancer enhancer({0.5f, 0.3f});
    run(state, [&](Bench& b) { enhancer.enhance(b.y, b.cancellation); });
}

BENCHMARK(taper)->Arg(512)->Arg(1024)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(estimate)->Arg(512)->Arg(1024)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(hyperLaplacian)->Arg(512)->Arg(1024)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(hyperLaplacianMasked)
    ->Arg(512)
    ->Arg(1024)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();
BENCHMARK(quadratic)->Arg(512)->Arg(1024)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(limit)->Arg(512)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(sharpenEdges)->Arg(512)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(enhanceDetail)->Arg(512)->Unit(benchmark::kMillisecond)->UseManualTime();

} // namespace

BENCHMARK_MAIN();
