// Compares the deconvolution of a tile with the time that FFTW (single precision, FFTW_ESTIMATE)
// needs for the transforms of the tile alone, all on one thread. Luminance takes 13 transforms, the
// two chroma planes 4. Each iteration times both, one after the other, in processor time of the
// thread. "ratio" is the quotient of the medians: at 1, the whole deconvolution is as fast as the
// reference's transforms.
//
// Content 0 is a drawn scene with a little noise: most gradients shrink to 0, as in photographs.
// Content 1 is white noise: every gradient needs the table lookup.
//
//   bench_deconvolution --benchmark_min_time=1

#include "velimproclib/veldeblurcv/deconvolution/ChromaDeconv.h"
#include "velimproclib/veldeblurcv/deconvolution/DeconvHL.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <ctime>
#include <fftw3.h>
#include <omp.h>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

namespace {

enum Content { kDrawnScene = 0, kWhiteNoise = 1 };

constexpr float kLambda = 2000.0f;
constexpr float kAlpha = 0.8f;
constexpr float kChromaWeight = 0.01f;

cv::Mat blurKernel() {
    const cv::Mat line = cv::getGaussianKernel(15, 2.0, CV_32F);
    return line * line.t();
}

cv::Mat observedPlane(int side, int content) {
    cv::Mat plane(side, side, CV_32FC1);
    std::mt19937 random(1);
    if (content == kWhiteNoise) {
        std::uniform_real_distribution<float> value(0.0f, 1.0f);
        std::generate(plane.begin<float>(), plane.end<float>(), [&] { return value(random); });
        return plane;
    }
    for (int i = 0; i < side; ++i) {
        const cv::Point corner(static_cast<int>(random() % static_cast<unsigned>(side)),
                               static_cast<int>(random() % static_cast<unsigned>(side)));
        const cv::Scalar value(static_cast<double>(random() % 256) / 255.0);
        cv::rectangle(plane, corner, corner + cv::Point(side / 12, side / 16), value, cv::FILLED);
    }
    cv::filter2D(plane, plane, -1, blurKernel());
    std::normal_distribution<float> noise(0.0f, 0.004f);
    std::for_each(plane.begin<float>(), plane.end<float>(),
                  [&](float& value) { value += noise(random); });
    return plane;
}

/// The transforms of the reference with their planes and plans.
class Transforms {
public:
    explicit Transforms(int side)
        : m_count(static_cast<std::size_t>(side) * static_cast<std::size_t>(side)),
          m_image(fftwf_alloc_real(m_count)), m_restored(fftwf_alloc_real(m_count)),
          m_spectrum(fftwf_alloc_complex(m_count)),
          m_forward(fftwf_plan_dft_r2c_2d(side, side, m_image, m_spectrum, FFTW_ESTIMATE)),
          m_inverse(fftwf_plan_dft_c2r_2d(side, side, m_spectrum, m_restored, FFTW_ESTIMATE)) {
        std::mt19937 random(2);
        std::uniform_real_distribution<float> value(0.0f, 1.0f);
        std::generate_n(m_image, m_count, [&] { return value(random); });
    }
    Transforms(const Transforms&) = delete;
    Transforms& operator=(const Transforms&) = delete;
    ~Transforms() {
        fftwf_destroy_plan(m_forward);
        fftwf_destroy_plan(m_inverse);
        fftwf_free(m_image);
        fftwf_free(m_restored);
        fftwf_free(m_spectrum);
    }

    /// One transform for the numerator, then one forward and one inverse for each of six passes.
    void luminance() const {
        fftwf_execute(m_forward);
        constexpr int kPasses = 6;
        for (int pass = 0; pass < kPasses; ++pass) {
            pair();
        }
    }
    void chroma() const {
        pair();
        pair();
    }

private:
    void pair() const {
        fftwf_execute(m_forward);
        fftwf_execute(m_inverse);
    }

    std::size_t m_count;
    float* m_image;
    float* m_restored;
    fftwf_complex* m_spectrum;
    fftwf_plan m_forward;
    fftwf_plan m_inverse;
};

/// The two deconvolvers with their planes.
struct Tile {
    Tile(int side, int content)
        : in(observedPlane(side, content)), out(side, side, CV_32FC1), transforms(side) {
        const cv::Mat kernel = blurKernel();
        deconv.setup(kernel, cv::Point(), in.size(), kLambda, kAlpha, true);
        chromaDeconv.setup(kernel, cv::Point(), in.size(), kChromaWeight);
    }

    void luminance() { deconv.Proc(in, out); }
    void chroma() {
        chromaDeconv.Proc(in, out);
        chromaDeconv.Proc(in, out);
    }

    cv::Mat in;
    cv::Mat out;
    Transforms transforms;
    vel::CDeconvHL deconv;
    vel::CChromaDeconv chromaDeconv;
};

template <class Work>
double secondsOf(const Work& work) {
    const auto now = [] {
        timespec time;
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const double start = now();
    work();
    return now() - start;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

template <class Ours, class Reference>
void compare(benchmark::State& state, const Ours& ours, const Reference& reference) {
    std::vector<double> ourSeconds;
    std::vector<double> referenceSeconds;
    ours();
    reference();
    for (auto _ : state) {
        ourSeconds.push_back(secondsOf(ours));
        referenceSeconds.push_back(secondsOf(reference));
        state.SetIterationTime(ourSeconds.back());
    }
    state.counters["ours_ms"] = 1e3 * median(ourSeconds);
    state.counters["transforms_ms"] = 1e3 * median(referenceSeconds);
    state.counters["ratio"] = median(ourSeconds) / median(referenceSeconds);
}

Tile makeTile(const benchmark::State& state) {
    return {static_cast<int>(state.range(0)), static_cast<int>(state.range(1))};
}

void luminance(benchmark::State& state) {
    Tile tile = makeTile(state);
    compare(
        state, [&] { tile.luminance(); }, [&] { tile.transforms.luminance(); });
}

void chroma(benchmark::State& state) {
    Tile tile = makeTile(state);
    compare(
        state, [&] { tile.chroma(); }, [&] { tile.transforms.chroma(); });
}

void wholeTile(benchmark::State& state) {
    Tile tile = makeTile(state);
    compare(
        state,
        [&] {
            tile.luminance();
            tile.chroma();
        },
        [&] {
            tile.transforms.luminance();
            tile.transforms.chroma();
        });
}

void sizesAndContents(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"side", "content"})
        ->ArgsProduct({{256, 512, 1024}, {kDrawnScene, kWhiteNoise}})
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

BENCHMARK(wholeTile)->Apply(sizesAndContents);
BENCHMARK(luminance)->Apply(sizesAndContents);
BENCHMARK(chroma)->Apply(sizesAndContents);

} // namespace

int main(int argc, char** argv) {
    omp_set_num_threads(1);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
