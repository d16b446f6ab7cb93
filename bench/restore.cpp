// Measures the restoration of pictures of 6 and 24 megapixels with a disc of radius 5.
//
//   restore  milliseconds of a call, and its time divided by that of ornDeblurSharpen (`core`),
//            measured alternately in one run on the same number of threads. With `busy` another
//            process keeps one processor busy.
//   cancel   milliseconds from the callback that cancels a call to the return of the call: the
//            median and the longest of 20 calls of 24 megapixels, cancelled at different moments
//
//   bench_restore --benchmark_filter=restore/24
#include "bench/alternate.h"
#include "bench/texturedPixels.h"
#include "restoration/failures/Failure.h"
#include "restoration/kernels/analyticKernel.h"
#include "restoration/pipeline/restorePicture.h"
#include "velorncore10.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <memory>
#include <omp.h>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr float kDiscRadius = 5.0f;
constexpr float kStrength = 10000.0f;

/// A process that computes until it is destroyed.
class BusyProcess {
public:
    BusyProcess() : m_process(fork()) {
        if (m_process < 0) {
            throw std::runtime_error("no process");
        }
        if (m_process == 0) {
            volatile unsigned counter = 0;
            while (true) {
                counter = counter + 1;
            }
        }
    }
    ~BusyProcess() {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
    BusyProcess(const BusyProcess&) = delete;
    BusyProcess& operator=(const BusyProcess&) = delete;

private:
    pid_t m_process;
};

struct Call {
    Call(int width, int height)
        : pixels(texturedPixels(width, height)), result(pixels.size()),
          blur(restoration::analyticKernel(VELORN_BLUR_DISC, kDiscRadius, 0.0f)),
          source{pixels.data(), std::ptrdiff_t{width} * 3, width, height, 3, 0, VELORN_SAMPLES_U8},
          target(source) {
        target.data = result.data();
        settings.size = sizeof settings;
        settings.strength = kStrength;
        settings.chromaStrength = 100.0f;
        settings.alpha = 0.5f;
        settings.limit = 0.5f;
        settings.edgeRadius = 0.85f;
        settings.edgeGain = 1.0f;
        settings.edgeFloor = 0.005f;
        settings.noise = VELORN_AUTOMATIC;
        settings.light = VELORN_LIGHT_DISPLAY;
        settings.continueFrame = 1;
        settings.recoverClipped = 1;
        settings.region = {0, 0, width, height};
    }

    void restore(int threads) {
        settings.threads = threads;
        const restoration::Kernel* kernels[] = {&blur};
        restoration::restorePicture(source, target, kernels, settings);
    }

    void deblurSharpen(int threads) {
        omp_set_num_threads(threads);
        cv::setNumThreads(threads);
        KernelRecord kernel{blur.width, blur.height, blur.width / 2, blur.height / 2,
                            blur.values.data()};
        ImageRecord image{psC3U8,           pixels.data(), source.width * 3, result.data(),
                          source.width * 3, source.width,  source.height};
        ProgressRecord progress{100, 100, nullptr, nullptr, 0};
        ornDeblurSharpen(&progress, &image, &kernel, 1, kStrength, 0.5f, 0.5f, 0.85f, 0.0f, 1.0f,
                         0.005f, 0.0f, 0.0f);
    }

    std::vector<unsigned char> pixels;
    std::vector<unsigned char> result;
    restoration::Kernel blur;
    VelornPicture source;
    VelornPicture target;
    VelornRestoreSettings settings{};
};

void restore(benchmark::State& state) {
    const auto megapixels = static_cast<int>(state.range(0));
    const auto threads = static_cast<int>(state.range(1));
    Call call(megapixels == 6 ? 3000 : 6000, megapixels == 6 ? 2000 : 4000);
    const auto busy = state.range(2) != 0 ? std::make_unique<BusyProcess>() : nullptr;
    vel::bench::runAgainst(
        state, "core", [&] { call.restore(threads); }, [&] { call.deblurSharpen(threads); });
}

BENCHMARK(restore)
    ->ArgNames({"megapixels", "threads", "busy"})
    ->ArgsProduct({{6, 24}, {1, 2}, {0, 1}})
    ->Iterations(3)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

/// Cancels after `delay` and remembers when.
struct CancelLater {
    Clock::time_point moment;
    Clock::time_point cancelled;
};

void cancel(benchmark::State& state) {
    constexpr int kCalls = 20;
    Call call(6000, 4000);
    const auto busy = state.range(0) != 0 ? std::make_unique<BusyProcess>() : nullptr;
    std::vector<double> milliseconds;
    call.settings.progress = [](double, void* data) -> std::int32_t {
        auto& later = *static_cast<CancelLater*>(data);
        later.cancelled = Clock::now();
        return later.cancelled < later.moment;
    };
    for (auto _ : state) {
        for (int i = 0; i < kCalls; ++i) {
            CancelLater later{Clock::now() + std::chrono::milliseconds(37 * i), {}};
            call.settings.userData = &later;
            try {
                call.restore(2);
            } catch (const restoration::Failure&) {
                const std::chrono::duration<double, std::milli> passed =
                    Clock::now() - later.cancelled;
                milliseconds.push_back(passed.count());
            }
        }
        state.SetIterationTime(1e-3 * vel::bench::median(milliseconds));
    }
    state.counters["longest_ms"] = *std::ranges::max_element(milliseconds);
    state.counters["calls"] = static_cast<double>(milliseconds.size());
}

BENCHMARK(cancel)->ArgName("busy")->Arg(0)->Arg(1)->Iterations(1)->UseManualTime()->Unit(
    benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
