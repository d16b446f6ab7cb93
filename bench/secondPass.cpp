// The second pass against the first, the hyper-Laplacian deconvolution, on one tile and one thread;
// the counter `passes` is the ratio of their times. The filter alone is measured against a
// memcpy of its plane.

#include "restoration/secondpass/SecondPass.h"
#include "alternate.h"
#include "restoration/deconvolution/deconvolveHyperLaplacian.h"
#include "restoration/kernels/analyticKernel.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <random>

namespace {

using namespace restoration;

Plane randomPlane(int side) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> values(0.0f, 1.0f);
    Plane plane(side, side);
    std::ranges::generate(plane.values(), [&] { return values(random); });
    return plane;
}

std::size_t planeBytes(const Plane& plane) {
    return plane.values().size() * sizeof(float);
}

void secondPass(benchmark::State& state) {
    const auto side = static_cast<int>(state.range(0));
    const Kernel kernel = analyticKernel(VELORN_BLUR_DISC, 3.0f, 0.0f);
    const BlurSpectrum blur(kernel, side);
    const auto effort = state.range(1) != 0 ? SecondPass::Effort::Full : SecondPass::Effort::Quick;
    const SecondPass pass(kernel, {1.0f}, effort);
    const Cancellation never;
    TileScratch scratch(side);
    DctFilter filter;
    Plane y = randomPlane(side);
    Plane x(side, side);
    vel::bench::runAgainst(
        state, "passes", [&] { pass.improve(y, blur, x, scratch, filter, never); },
        [&] {
            deconvolveHyperLaplacian(y, nullptr, blur, {2000.0f, 0.5f}, x, scratch, never);
        });
}
BENCHMARK(secondPass)
    ->ArgNames({"side", "full"})
    ->ArgsProduct({{256, 512, 1024}, {0, 1}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

void filter(benchmark::State& state) {
    const Plane noisy = randomPlane(static_cast<int>(state.range(0)));
    const BlockLattice lattice{static_cast<int>(state.range(1)), 0, 0, 0};
    DctNoise noise;
    noise.variances.fill(1e-3f);
    Plane out(noisy.width(), noisy.height());
    DctFilter filter;
    vel::bench::runAgainstCopy(state, planeBytes(noisy), [&] {
        filter.shrink(noisy, noise, 2.4f, lattice, out, Cancellation());
    });
}
BENCHMARK(filter)
    ->ArgNames({"side", "step"})
    ->ArgsProduct({{256, 1024}, {1, 2, 4}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
