// The whole of ornBlurEstimate, from host pixels to kernel, on a drawn scene blurred by a disc.
//
// A row measures one thread and then two in the same run: seconds on the clock ("s_1", "s_2"),
// which other work on the machine lengthens, and seconds of processor time ("cpu_1", "cpu_2"),
// which it hardly affects. The share of each stage follows, in percent of the processor time:
// "prediction" (edge images), "mask", "sums" (accumulation of the kernel's equations), "solve" and
// "deconvolution". The rest, pyramid and blends, is missing to 100. The stages are timed in a run
// of their own, level by level.
//
//   bench_blurEstimate --benchmark_filter=1000
//
// Each row is measured once, because the large ones take long.

#include "tests/support/DrawnScene.h"
#include "velimproclib/veldeblurcv/estimation/BlurEst.h"
#include "velimproclib/veldeblurcv/estimation/edges/EdgeMask.h"
#include "velimproclib/veldeblurcv/estimation/edges/estEdge.h"
#include "velimproclib/veldeblurcv/estimation/levels/alphaBlend.h"
#include "velimproclib/veldeblurcv/estimation/levels/deconvLevel.h"
#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"
#include "velimproclib/veldeblurcv/estimation/solver/normaliseEstimate.h"
#include "velimproclib/veldeblurcv/estimation/solver/PSFEst.h"
#include "velorncore10.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <omp.h>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace {

constexpr float kDiscRadius = 4.0f;

struct Seconds {
    double clock;
    double processor; ///< of all threads
};

double secondsOf(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

template <class Work>
Seconds timeOf(Work&& work) {
    const Seconds start{secondsOf(CLOCK_MONOTONIC), secondsOf(CLOCK_PROCESS_CPUTIME_ID)};
    work();
    return {secondsOf(CLOCK_MONOTONIC) - start.clock,
            secondsOf(CLOCK_PROCESS_CPUTIME_ID) - start.processor};
}

void useThreads(int threads) {
    omp_set_num_threads(threads);
    cv::setNumThreads(threads);
}

cv::Mat blurredPicture(cv::Size size) {
    std::vector<float> values(121);
    KernelRecord disc{0, 0, 0, 0, values.data()};
    ornCreateKernel(1, kDiscRadius, 0.0f, &disc);
    const cv::Mat kernel(disc.height, disc.width, CV_32FC1, disc.data);
    return vel::test::blurredWith(vel::test::drawnScene(size, CV_8UC3), kernel);
}

/// The time of one call.
Seconds estimateWhole(const cv::Mat& picture, int side) {
    std::vector<float> values(static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
    KernelRecord kernel{side, side, 0, 0, values.data()};
    PlaneRecord image{psC3U8, picture.data, static_cast<std::int32_t>(picture.step), picture.cols,
                      picture.rows};
    ProgressRecord progress{100, 100, nullptr, nullptr, 0};
    return timeOf([&] { ornBlurEstimate(&progress, &image, &kernel, 0.5f); });
}

enum Stage { kPrediction, kMask, kSums, kSolve, kDeconvolution, kRest, kStages };
constexpr std::array<const char*, kRest> kStageNames{"prediction%", "mask%", "sums%", "solve%",
                                                     "deconvolution%"};

class StageTimes {
public:
    template <class Work>
    void time(Stage stage, const Work& work) {
        m_seconds[stage] += timeOf(work).processor;
    }
    void report(benchmark::State& state) const {
        double total = 0.0;
        for (const double seconds : m_seconds) {
            total += seconds;
        }
        for (std::size_t stage = 0; stage < kStageNames.size(); ++stage) {
            state.counters[kStageNames[stage]] = 100.0 * m_seconds[stage] / total;
        }
    }

private:
    std::array<double, kStages> m_seconds{};
};

/// The steps of `estKernel`, with accumulation and solve timed separately.
void solveKernel(const cv::Mat& edge, const cv::Mat& mask, const cv::Mat& blurred, cv::Mat& kernel,
                 StageTimes& times) {
    vel::CProgressSpan silent;
    vel::CPSFEst solver(silent);
    times.time(kSums, [&] {
        solver.setup(kernel.size(), edge.size(), cv::Point(kernel.cols / 2, kernel.rows / 2),
                     0.001f, 0.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f);
        solver.computeLA(edge, blurred, mask);
    });
    times.time(kSolve, [&] {
        solver.computePSF().copyTo(kernel);
        vel::normaliseEstimate(kernel, 0.05f);
    });
}

/// The iterations of one level, in the order of `estimateLvl`.
void estimateLevel(vel::CBlurEst& estimator, int level, StageTimes& times) {
    const auto index = static_cast<std::size_t>(level);
    const bool coarsest = level == estimator.m_pyrLvls;
    const cv::Mat blurred = estimator.m_imPyr[index];
    cv::Mat& kernel = estimator.m_kPyr[index];
    cv::Mat latent = blurred.clone();
    if (!coarsest) {
        times.time(kRest, [&] { cv::pyrUp(estimator.m_imPyr[index + 1], latent, blurred.size()); });
    }
    const float sigmaColor = 80.0f / static_cast<float>(level + 1);
    float sigmaSpace = coarsest ? 1.0f : 0.9f * static_cast<float>(kernel.cols / 2);
    cv::Mat edge;
    cv::Mat mask;
    cv::Mat restored(blurred.size(), CV_8UC1);
    for (int iteration = 0; iteration < 3; ++iteration) {
        times.time(kPrediction, [&] { vel::estEdge(latent, edge, 5, sigmaColor, sigmaSpace, 1); });
        if (iteration == 0) {
            vel::EdgeMask selection;
            times.time(kMask,
                       [&] { selection.compute(edge, mask, 2000 * kernel.cols, kernel.cols); });
        }
        sigmaSpace = std::max(0.5f, sigmaSpace * sigmaSpace);
        solveKernel(edge, mask, blurred, kernel, times);
        if (level == 0 && iteration == 2) {
            continue;
        }
        vel::CProgressSpan silent;
        times.time(kDeconvolution, [&] { vel::deconvLevel(blurred, kernel, restored, silent); });
        times.time(kRest, [&] { vel::alphaBlend(restored, latent, iteration == 0 ? 0.5f : 1.0f); });
    }
    estimator.m_imPyr[index] = latent;
}

StageTimes estimateByStages(const cv::Mat& luminance, int side) {
    StageTimes times;
    vel::CProgressSpan silent;
    vel::CBlurEst estimator;
    times.time(kRest, [&] { estimator.setup(luminance, cv::Mat(side, side, CV_32FC1), silent); });
    for (int level = estimator.m_pyrLvls; level >= 0; --level) {
        estimateLevel(estimator, level, times);
    }
    return times;
}

void blurEstimate(benchmark::State& state) {
    const cv::Size size(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    const auto side = static_cast<int>(state.range(2));
    const cv::Mat picture = blurredPicture(size);
    cv::Mat luminance;
    cv::cvtColor(picture, luminance, cv::COLOR_RGB2GRAY);
    for (auto _ : state) {
        useThreads(1);
        const Seconds one = estimateWhole(picture, side);
        useThreads(2);
        const Seconds two = estimateWhole(picture, side);
        state.SetIterationTime(one.clock + two.clock);
        state.counters["s_1"] = one.clock;
        state.counters["s_2"] = two.clock;
        state.counters["cpu_1"] = one.processor;
        state.counters["cpu_2"] = two.processor;
        estimateByStages(luminance, side).report(state);
    }
}

BENCHMARK(blurEstimate)
    ->ArgsProduct({{1000}, {800}, {15, 31}})
    ->ArgsProduct({{3000}, {2000}, {15, 31}})
    ->ArgNames({"width", "height", "side"})
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
