// Measures the chroma planes of a tile on one thread, with a disc of radius 3.
//
//   restoreChroma  milliseconds for both planes, and the time divided by that of the luminance
//                  plane (`luminance`), measured alternately in one run
//   chooseChroma   milliseconds for 16 patches of 256 by 256 pixels
//
//   bench_chroma --benchmark_filter=restoreChroma
#include "bench/alternate.h"
#include "restoration/chroma/chooseChroma.h"
#include "restoration/chroma/restoreChroma.h"
#include "restoration/deconvolution/deconvolveHyperLaplacian.h"
#include "restoration/kernels/analyticKernel.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <random>
#include <vector>

namespace {

using namespace restoration;

Kernel disc() {
    return analyticKernel(VELORN_BLUR_DISC, 3.0f, 0.0f);
}

Plane textured(int side, unsigned seed) {
    Plane plane(side, side);
    std::mt19937 random(seed);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const unsigned block = static_cast<unsigned>(y / 16 + x / 16) % 7;
            plane.row(y)[x] = static_cast<float>(block * 30 + random() % 16) / 255.0f;
        }
    }
    return plane;
}

void restoreChromaPlanes(benchmark::State& state) {
    const auto side = static_cast<int>(state.range(0));
    const BlurSpectrum blur(disc(), side);
    Plane luminance = textured(side, 0);
    const Plane blue = textured(side, 1);
    const Plane red = textured(side, 2);
    Plane x(side, side);
    TileScratch scratch(side);
    const Cancellation cancellation;
    vel::bench::runAgainst(
        state, "luminance",
        [&] {
            restoreChroma(blue, blur, {0.05f, 1e-4f}, x, scratch, cancellation);
            restoreChroma(red, blur, {0.05f, 1e-4f}, x, scratch, cancellation);
        },
        [&] {
            deconvolveHyperLaplacian(luminance, nullptr, blur, {10000.0f, 0.5f}, x, scratch,
                                     cancellation);
        });
}

BENCHMARK(restoreChromaPlanes)
    ->Name("restoreChroma")
    ->ArgName("side")
    ->Arg(256)
    ->Arg(512)
    ->Arg(1024)
    ->Iterations(10)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

void choose(benchmark::State& state) {
    constexpr int kSide = 256;
    std::vector<Patch> patches(16);
    for (unsigned i = 0; i < patches.size(); ++i) {
        Tile& tile = patches[i].tile;
        tile.side = kSide;
        for (unsigned plane = 0; plane < 3; ++plane) {
            tile.planes.push_back(textured(kSide, 3 * i + plane));
        }
        tile.known = Mask(kSide, kSide);
        std::fill_n(tile.known.row(0), kSide * kSide, std::uint8_t{1});
    }
    const BlurSpectrum blur(disc(), kSide);
    NoiseLevels noise;
    noise.chromaBlue = noise.chromaRed = 3.0f;
    Team team(1, {nullptr, nullptr});
    for (auto _ : state) {
        benchmark::DoNotOptimize(chooseChroma(patches, blur, noise, -1.0f, team));
    }
}

BENCHMARK(choose)->Name("chooseChroma")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
