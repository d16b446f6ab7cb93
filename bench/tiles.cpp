// The path of a tile through the tile pipeline, without the stages in between: load, taper, colour
// twist, twist back, store. The reference is memcpy of as many bytes as the tile's source pixels
// and planes have; it is measured in the same run, and every result is also given as a ratio to it.

#include "velimproclib/tiles/BlockProcP3.h"
#include "velimproclib/tiles/ColorTwistTile.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstring>
#include <opencv2/core.hpp>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// Milliseconds of a copy of three planes and their source pixels; the fastest of several runs.
double copyTime(int side, int type) {
    const std::size_t bytes = static_cast<std::size_t>(side) * static_cast<std::size_t>(side) *
                              (3 * sizeof(float) + static_cast<std::size_t>(CV_ELEM_SIZE(type)));
    const std::vector<char> from(bytes, 1);
    std::vector<char> to(bytes, 2);
    double fastest = 1e9;
    for (int run = 0; run < 20; ++run) {
        const auto start = Clock::now();
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
        fastest = std::min(fastest, millisecondsSince(start));
    }
    return fastest;
}

struct TileTimes {
    double load = 1e9;
    double twist = 1e9;
    double store = 1e9;
};

/// Times every tile of one walk, and keeps the fastest time of each step.
void timeWalk(const cv::Mat& source, cv::Mat& target, int side, int border, int taper,
              TileTimes& times) {
    vel::CBlockProcP3 walk;
    walk.init(source, target, side, side, 0, 16, border, taper);
    for (;;) {
        auto start = Clock::now();
        vel::TilePlanes* planes = walk.nextBlock();
        if (planes == nullptr) {
            return;
        }
        times.load = std::min(times.load, millisecondsSince(start));
        start = Clock::now();
        vel::rgbToLumaChroma(*planes, 0);
        vel::lumaChromaToRgb(*planes, 0);
        times.twist = std::min(times.twist, millisecondsSince(start));
        start = Clock::now();
        walk.doneABlock();
        times.store = std::min(times.store, millisecondsSince(start));
    }
}

/// Arguments: tile side, margin, 8 or 16 bits.
void tileRoundTrip(benchmark::State& state) {
    const auto side = static_cast<int>(state.range(0));
    const auto border = static_cast<int>(state.range(1));
    const int type = state.range(2) == 8 ? CV_8UC3 : CV_16UC3;
    cv::Mat source(2 * side, 2 * side, type);
    cv::randu(source, 0, 255);
    cv::Mat target(source.size(), type);
    TileTimes tapered;
    TileTimes plain;
    for (auto _ : state) {
        timeWalk(source, target, side, border, 1, tapered);
        timeWalk(source, target, side, border, 0, plain);
    }
    const double total = tapered.load + tapered.twist + tapered.store;
    state.counters["tile_ms"] = total;
    state.counters["load_ms"] = plain.load;
    state.counters["taper_ms"] = tapered.load - plain.load;
    state.counters["twists_ms"] = tapered.twist;
    state.counters["store_ms"] = tapered.store;
    state.counters["taper_share"] = (tapered.load - plain.load) / total;
    state.counters["to_memcpy"] = total / copyTime(side, type);
}

BENCHMARK(tileRoundTrip)
    ->ArgNames({"side", "border", "bits"})
    ->ArgsProduct({{512, 1024}, {18, 46, 78}, {8, 16}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace

BENCHMARK_MAIN();
