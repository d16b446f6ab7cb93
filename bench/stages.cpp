// Compares the sharpening stages on one tile with a memcpy of one float plane of the tile in the
// same run (column `copies`). OMP_NUM_THREADS sets the number of threads:
//   bench_stages --benchmark_min_time=1

#include "bench/alternate.h"
#include "velimproclib/veldeblurcv/sharpening/SharpenEdge.h"
#include "velimproclib/veldeblurcv/sharpening/SharpLimit.h"

#include <benchmark/benchmark.h>
#include <cstddef>
#include <opencv2/core.hpp>
#include <random>

namespace {

cv::Mat_<float> tile(int side, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> pixel(-0.1f, 1.1f);
    cv::Mat_<float> plane(side, side);
    for (auto& value : plane) {
        value = pixel(random);
    }
    return plane;
}

void runOnTile(benchmark::State& state, int side, auto&& work) {
    const auto pixels = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
    vel::bench::runAgainstCopy(state, pixels * sizeof(float), work);
}

void sharpLimit(benchmark::State& state) {
    const int side = static_cast<int>(state.range(0));
    const cv::Mat source = tile(side, 1);
    const cv::Mat blur = tile(side, 2);
    cv::Mat out = tile(side, 3);
    vel::CSharpLimit limit;
    limit.m_imSize = blur.size();
    limit.m_innerPasses = 1;
    limit.m_radius = static_cast<int>(state.range(1));
    limit.m_upper = 2.0f;
    limit.m_lower = 0.5f;
    limit.m_mix = 0.5f;
    runOnTile(state, side, [&] { limit.Proc(source, blur, out); });
}
BENCHMARK(sharpLimit)
    ->ArgNames({"side", "radius"})
    ->ArgsProduct({{512, 1024}, {1, 5}})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

void sharpenEdge(benchmark::State& state) {
    const int side = static_cast<int>(state.range(0));
    cv::Mat in = tile(side, 1);
    cv::Mat out = tile(side, 2);
    runOnTile(state, side, [&] {
        vel::CSharpenEdge edge(0.85f, 0.005f);
        edge.m_slope = 2.0f;
        edge.Proc(in, out);
    });
}
BENCHMARK(sharpenEdge)
    ->ArgName("side")
    ->Arg(512)
    ->Arg(1024)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

} // namespace

BENCHMARK_MAIN();
