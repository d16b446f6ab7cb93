// Compares the neighbourhood primitives on one thread with a memcpy of a plane of the same pixels
// in the same run (column `copies`), and the resampler with cv::resize (column `resizes`):
//   bench_filters --benchmark_min_time=1

#include "bench/alternate.h"
#include "velimproclib/primitives/arithmetic/AbsoluteDifference.h"
#include "velimproclib/primitives/arithmetic/Histogram.h"
#include "velimproclib/primitives/filters/LinearFilters.h"
#include "velimproclib/primitives/filters/MeanFilter.h"
#include "velimproclib/primitives/filters/Medians.h"
#include "velimproclib/primitives/filters/Morphology.h"
#include "velimproclib/primitives/pixels/Resampling.h"

#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kSide = 512;
constexpr int kBorder = 4;

/// A plane with a border; `data` points to the first pixel inside.
template <class T>
struct Plane {
    Plane() : pixels(static_cast<std::size_t>(kRowPixels * kRowPixels)) {
        std::mt19937 random(1);
        std::uniform_int_distribution<int> value(0, 255);
        for (T& pixel : pixels) {
            pixel = static_cast<T>(value(random));
        }
    }
    T* data() { return pixels.data() + kBorder * kRowPixels + kBorder; }

    static constexpr int kRowPixels = kSide + 2 * kBorder;
    static constexpr int kStep = kRowPixels * static_cast<int>(sizeof(T));
    std::vector<T> pixels;
};

template <class T>
void run(benchmark::State& state, auto&& operation) {
    Plane<T> src;
    Plane<T> dst;
    vel::bench::runAgainstCopy(state, sizeof(T) * kSide * kSide,
                               [&] { operation(src.data(), dst.data(), Plane<T>::kStep); });
}

template <class Work>
void addBenchmark(const std::string& name, Work&& work) {
    benchmark::RegisterBenchmark(name.c_str(), work)
        ->Unit(benchmark::kMicrosecond)
        ->UseManualTime();
}

constexpr float kTaps[7] = {0.01f, 0.05f, 0.2f, 0.48f, 0.2f, 0.05f, 0.01f};
constexpr std::int32_t kIntegerTaps[5] = {100, 1000, 4096, 1000, 100};

void filterRowF32(benchmark::State& state) {
    run<float>(state, [](float* src, float* dst, int step) {
        vel::filterRowF32(src, step, dst, step, kSide, kSide, kTaps, 7, 3);
    });
}

void filterColumnF32(benchmark::State& state) {
    run<float>(state, [](float* src, float* dst, int step) {
        vel::filterColumnF32(src, step, dst, step, kSide, kSide, kTaps, 7, 3);
    });
}

void filterRowU8(benchmark::State& state) {
    run<std::uint8_t>(state, [](std::uint8_t* src, std::uint8_t* dst, int step) {
        vel::filterRowU8(src, step, dst, step, kSide, kSide, kIntegerTaps, 5, 2, 6296);
    });
}

void dilate3x3F32(benchmark::State& state) {
    run<float>(state, [](float* src, float* dst, int step) {
        vel::dilate3x3F32(src, step, dst, step, kSide, kSide);
    });
}

void dilate3x3InPlaceU8(benchmark::State& state) {
    run<std::uint8_t>(state, [](std::uint8_t* src, std::uint8_t*, int step) {
        benchmark::DoNotOptimize(vel::dilate3x3InPlaceU8(src, step, kSide, kSide));
    });
}

template <auto filter, std::int32_t mask>
void filterOfMask(benchmark::State& state) {
    run<std::uint8_t>(state, [](std::uint8_t* src, std::uint8_t* dst, int step) {
        filter(src, step, dst, step, kSide, kSide, mask);
    });
}

void absDiffU8(benchmark::State& state) {
    run<std::uint8_t>(state, [](std::uint8_t* src, std::uint8_t* dst, int step) {
        vel::absDiffU8(src, step, dst, step, dst, step, kSide, kSide);
    });
}

void histogramEvenU8(benchmark::State& state) {
    std::vector<std::int32_t> hist(256);
    std::vector<std::int32_t> levels(257);
    run<std::uint8_t>(state, [&](std::uint8_t* src, std::uint8_t*, int step) {
        vel::histogramEvenU8(src, step, kSide, kSide, hist.data(), levels.data(), 257, 0, 256);
    });
}

void resizeU8(benchmark::State& state, double factor) {
    Plane<std::uint8_t> src;
    const cv::Mat source(kSide, kSide, CV_8UC1, src.data(), src.kStep);
    const int side = static_cast<int>(kSide * factor);
    cv::Mat resized(side, side, CV_8UC1);
    cv::Mat reference(side, side, CV_8UC1);
    vel::bench::runAgainst(
        state, "resizes",
        [&] {
            vel::resizeU8(src.data(), kSide, kSide, src.kStep, {0, 0, kSide, kSide}, resized.data,
                          side, side, side, factor, factor, vel::kLinear);
        },
        [&] { cv::resize(source, reference, reference.size(), 0, 0, cv::INTER_LINEAR); });
}

} // namespace

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    addBenchmark("filterRowF32", filterRowF32);
    addBenchmark("filterColumnF32", filterColumnF32);
    addBenchmark("filterRowU8", filterRowU8);
    addBenchmark("dilate3x3F32", dilate3x3F32);
    addBenchmark("dilate3x3InPlaceU8", dilate3x3InPlaceU8);
    addBenchmark("medianHorizU8/51", filterOfMask<vel::medianHorizU8, vel::kMask51>);
    addBenchmark("medianVertU8/15", filterOfMask<vel::medianVertU8, vel::kMask15>);
    addBenchmark("medianCrossU8/33", filterOfMask<vel::medianCrossU8, vel::kMask33>);
    addBenchmark("medianCrossU8/55", filterOfMask<vel::medianCrossU8, vel::kMask55>);
    addBenchmark("meanFilterU8/33", filterOfMask<vel::meanFilterU8, vel::kMask33>);
    addBenchmark("meanFilterU8/55", filterOfMask<vel::meanFilterU8, vel::kMask55>);
    addBenchmark("absDiffU8", absDiffU8);
    addBenchmark("histogramEvenU8", histogramEvenU8);
    for (const double factor : {0.25, 0.5, 0.75, 1.5, 2.0}) {
        addBenchmark("resizeU8/" + std::to_string(factor).substr(0, 4),
                     [=](benchmark::State& state) { resizeU8(state, factor); });
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
