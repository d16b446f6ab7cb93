// Our transforms against FFTW's real transforms in single precision, one thread, FFTW_ESTIMATE.
// "halfSpectrum" rows are the 2-D transform in the form that the deconvolution uses; "packed" rows
// use the packed spectrum of the catalogue. Compare medians of one run:
//   bench_transforms --benchmark_repetitions=15 --benchmark_enable_random_interleaving=true
//                    --benchmark_report_aggregates_only=true

#include "alternate.h"
#include "velimproclib/catalogue/fft/FftSpec.h"
#include "velimproclib/primitives/fft/RealFft2D.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <fftw3.h>
#include <hwy/aligned_allocator.h>
#include <random>
#include <vector>

namespace {

using vel::RealFft2D;

hwy::AlignedFreeUniquePtr<float[]> floats(std::size_t count) {
    auto buffer = hwy::AllocateAligned<float>(count);
    std::mt19937 random(1);
    std::uniform_real_distribution<float> values(0.0f, 1.0f);
    std::generate_n(buffer.get(), count, [&] { return values(random); });
    return buffer;
}

int orderOf(int side) {
    return std::bit_width(static_cast<unsigned>(side)) - 1;
}

/// One image and one spectrum for our transforms.
struct Ours {
    explicit Ours(int side)
        : fft(orderOf(side), orderOf(side)), step(side * static_cast<int>(sizeof(float))),
          image(floats(static_cast<std::size_t>(side) * static_cast<std::size_t>(side))),
          spectrum(floats(fft.spectrumFloats())), scratch(floats(fft.scratchFloats())) {}

    float* block(int b) const {
        return spectrum.get() + static_cast<std::size_t>(b) * fft.blockFloats();
    }

    RealFft2D fft;
    int step;
    hwy::AlignedFreeUniquePtr<float[]> image;
    hwy::AlignedFreeUniquePtr<float[]> spectrum;
    hwy::AlignedFreeUniquePtr<float[]> scratch;
};

void forwardRows(const Ours& our) {
    for (int group = 0; group < our.fft.groupCount(); ++group) {
        our.fft.forwardRows(our.image.get(), our.step, group, our.spectrum.get(),
                            our.scratch.get());
    }
}

void forwardColumns(const Ours& our) {
    for (int block = 0; block < our.fft.blockCount(); ++block) {
        our.fft.forwardColumns(our.block(block), block);
    }
}

void inverseColumns(const Ours& our) {
    for (int block = 0; block < our.fft.blockCount(); ++block) {
        our.fft.inverseColumns(our.block(block), block);
    }
}

void inverseRows(const Ours& our) {
    for (int group = 0; group < our.fft.groupCount(); ++group) {
        our.fft.inverseRows(our.spectrum.get(), group, our.image.get(), our.step,
                            our.scratch.get());
    }
}

/// The inverse works in place. Zeros stay zeros, and the time does not depend on values other
/// than denormals.
void clear(const Ours& our) {
    std::fill_n(our.spectrum.get(), our.fft.spectrumFloats(), 0.0f);
}

void halfSpectrumForward(benchmark::State& state) {
    const Ours our(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        forwardRows(our);
        forwardColumns(our);
        benchmark::ClobberMemory();
    }
}

void halfSpectrumForwardRowsOnly(benchmark::State& state) {
    const Ours our(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        forwardRows(our);
        benchmark::ClobberMemory();
    }
}

void halfSpectrumInverse(benchmark::State& state) {
    const Ours our(static_cast<int>(state.range(0)));
    clear(our);
    for (auto _ : state) {
        inverseColumns(our);
        inverseRows(our);
        benchmark::ClobberMemory();
    }
}

void halfSpectrumInverseRowsOnly(benchmark::State& state) {
    const Ours our(static_cast<int>(state.range(0)));
    clear(our);
    for (auto _ : state) {
        inverseRows(our);
        benchmark::ClobberMemory();
    }
}

/// The catalogue's transforms, with a work buffer provided by the caller.
struct Packed {
    explicit Packed(int side)
        : step(side * static_cast<int>(sizeof(float))),
          image(floats(static_cast<std::size_t>(side) * static_cast<std::size_t>(side))),
          packed(floats(static_cast<std::size_t>(side) * static_cast<std::size_t>(side))) {
        vel::fftInitAlloc(&spec, orderOf(side), orderOf(side), vel::kFftDivideInverse,
                          vel::kFftAccurate);
        work.resize(vel::fftWorkBufferBytes(spec));
    }
    Packed(const Packed&) = delete;
    Packed& operator=(const Packed&) = delete;
    ~Packed() { vel::fftFree(spec); }

    vel::FftSpec* spec = nullptr;
    int step;
    hwy::AlignedFreeUniquePtr<float[]> image;
    hwy::AlignedFreeUniquePtr<float[]> packed;
    std::vector<std::uint8_t> work;
};

void packedForward(benchmark::State& state) {
    Packed our(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        vel::fftFwdRealToPack(our.image.get(), our.step, our.packed.get(), our.step, our.spec,
                              our.work.data());
        benchmark::ClobberMemory();
    }
}

void packedInverse(benchmark::State& state) {
    Packed our(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        vel::fftInvPackToReal(our.packed.get(), our.step, our.image.get(), our.step, our.spec,
                              our.work.data());
        benchmark::ClobberMemory();
    }
}

/// Image, spectrum and plans of the reference.
struct Reference {
    explicit Reference(int side)
        : image(floats(static_cast<std::size_t>(side) * static_cast<std::size_t>(side))),
          spectrum(floats(static_cast<std::size_t>(side) * static_cast<std::size_t>(side + 2))),
          forward(fftwf_plan_dft_r2c_2d(side, side, image.get(), complexSpectrum(), FFTW_ESTIMATE)),
          inverse(
              fftwf_plan_dft_c2r_2d(side, side, complexSpectrum(), image.get(), FFTW_ESTIMATE)) {
        std::fill_n(spectrum.get(),
                    static_cast<std::size_t>(side) * static_cast<std::size_t>(side + 2), 0.0f);
    }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;
    ~Reference() {
        fftwf_destroy_plan(forward);
        fftwf_destroy_plan(inverse);
    }
    fftwf_complex* complexSpectrum() const {
        return reinterpret_cast<fftwf_complex*>(spectrum.get());
    }

    hwy::AlignedFreeUniquePtr<float[]> image;
    hwy::AlignedFreeUniquePtr<float[]> spectrum;
    fftwf_plan forward;
    fftwf_plan inverse;
};

void fftwForward(benchmark::State& state) {
    const Reference reference(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        fftwf_execute(reference.forward);
        benchmark::ClobberMemory();
    }
}

void fftwInverse(benchmark::State& state) {
    const Reference reference(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        fftwf_execute(reference.inverse);
        benchmark::ClobberMemory();
    }
}

/// `of_fftw` is our time divided by FFTW's; both alternate.
void forwardAgainstFftw(benchmark::State& state) {
    const Ours our(static_cast<int>(state.range(0)));
    const Reference reference(static_cast<int>(state.range(0)));
    vel::bench::runAgainst(
        state, "of_fftw",
        [&] {
            forwardRows(our);
            forwardColumns(our);
        },
        [&] { fftwf_execute(reference.forward); });
}

void inverseAgainstFftw(benchmark::State& state) {
    const Ours our(static_cast<int>(state.range(0)));
    clear(our);
    const Reference reference(static_cast<int>(state.range(0)));
    vel::bench::runAgainst(
        state, "of_fftw",
        [&] {
            inverseColumns(our);
            inverseRows(our);
        },
        [&] { fftwf_execute(reference.inverse); });
}

void sides(benchmark::internal::Benchmark* family) {
    family->Arg(256)->Arg(512)->Arg(1024)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(forwardAgainstFftw)->Apply(sides)->UseManualTime();
BENCHMARK(inverseAgainstFftw)->Apply(sides)->UseManualTime();
BENCHMARK(halfSpectrumForward)->Apply(sides);
BENCHMARK(fftwForward)->Apply(sides);
BENCHMARK(halfSpectrumInverse)->Apply(sides);
BENCHMARK(fftwInverse)->Apply(sides);
BENCHMARK(packedForward)->Apply(sides);
BENCHMARK(packedInverse)->Apply(sides);
BENCHMARK(halfSpectrumForwardRowsOnly)->Apply(sides);
BENCHMARK(halfSpectrumInverseRowsOnly)->Apply(sides);

} // namespace

BENCHMARK_MAIN();
