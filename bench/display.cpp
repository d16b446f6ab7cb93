// The display exports, 1800 by 1200 pixels, on one thread.
//
//   direct      PSImage2QImage at scale 1 against a memcpy that reads and writes as many bytes in
//               total; the counter `copies` is our time divided by the memcpy's
//   resampled   PSImage2QImage at 0.5 and 2 against cv::resize of three planes, without the
//               conversion between planes and pixels: `resizes`
//   colour      the colour pass alone, from a wide-gamut profile to sRGB, in million pixels per
//               second, against the transform itself, called once for all pixels without
//               reordering: `transforms`
#include "bench/alternate.h"
#include "tests/support/IccProfiles.h"
#include "velorncore10.h"

#include <lcms2.h>
#include <omp.h>
#include <opencv2/imgproc.hpp>

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kWidth = 1800;
constexpr int kHeight = 1200;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

std::vector<std::uint16_t> noise(std::size_t elements) {
    std::mt19937 random(1);
    std::vector<std::uint16_t> values(elements);
    for (auto& value : values) {
        value = static_cast<std::uint16_t>(random() % 32769);
    }
    return values;
}

void direct(benchmark::State& state, bool is8) {
    const auto picture = noise(3 * kPixels);
    const int step = kWidth * (is8 ? 3 : 6);
    PlaneRecord image{is8 ? psC3U8 : psC3U16, picture.data(), step, kWidth, kHeight};
    std::vector<std::uint8_t> display(4 * kPixels, 1);
    const std::size_t half = (static_cast<std::size_t>(step) * kHeight + 4 * kPixels) / 2;
    vel::bench::runAgainstCopy(state, half, [&] {
        PSImage2QImage(&image, display.data(), 4 * kWidth, kWidth, kHeight, 1.0f);
    });
}

void resampled(benchmark::State& state, bool is8, float scale) {
    const auto picture = noise(3 * kPixels);
    PlaneRecord image{is8 ? psC3U8 : psC3U16, picture.data(), kWidth * (is8 ? 3 : 6), kWidth,
                      kHeight};
    const cv::Size size(static_cast<int>(kWidth * scale), static_cast<int>(kHeight * scale));
    std::vector<std::uint8_t> display(4 * static_cast<std::size_t>(size.area()), 1);
    std::array<cv::Mat, 3> planes;
    std::array<cv::Mat, 3> resized;
    for (auto& plane : planes) {
        plane.create(kHeight, kWidth, CV_8UC1);
        cv::randu(plane, 0, 256);
    }
    vel::bench::runAgainst(
        state, "resizes",
        [&] {
            PSImage2QImage(&image, display.data(), 4 * size.width, size.width, size.height, scale);
        },
        [&] {
            for (std::size_t c = 0; c < 3; ++c) {
                cv::resize(planes[c], resized[c], size, 0, 0, cv::INTER_LINEAR);
            }
        });
}

void colour(benchmark::State& state) {
    const auto picture = noise(3 * kPixels);
    // An image without pixels leaves the display buffer unchanged, and the colour pass transforms
    // it.
    PlaneRecord image{psC3U8, picture.data(), 3 * kWidth, 0, 0};
    const auto profile = vel::test::wideGamutProfile();
    PSProfilesRecord profiles{profile.data(), static_cast<std::int32_t>(profile.size()), nullptr,
                              0};
    std::vector<std::uint8_t> display(4 * kPixels);
    std::memcpy(display.data(), picture.data(), display.size());
    std::vector<std::uint8_t> result(3 * kPixels);
    const vel::test::OpenProfile source(
        cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())),
        cmsCloseProfile);
    const vel::test::OpenProfile target(cmsCreate_sRGBProfile(), cmsCloseProfile);
    const vel::test::OpenTransform transform(
        cmsCreateTransform(source.get(), TYPE_RGB_8, target.get(), TYPE_RGB_8,
                           INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOCACHE),
        cmsDeleteTransform);
    vel::bench::runAgainst(
        state, "transforms",
        [&] {
            PSImageICC2QImage(&profiles, &image, display.data(), 4 * kWidth, kWidth, kHeight, 1.0f);
        },
        [&] {
            cmsDoTransform(transform.get(), picture.data(), result.data(),
                           static_cast<cmsUInt32Number>(kPixels));
        });
    state.counters["MPix_per_s"] = benchmark::Counter(
        static_cast<double>(kPixels) * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
}

template <class Work>
void add(const std::string& name, Work&& work) {
    benchmark::RegisterBenchmark(name.c_str(), work)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
    omp_set_num_threads(1);
    cv::setNumThreads(1);
    for (const bool is8 : {true, false}) {
        const std::string bits = is8 ? "/8bits" : "/16bits";
        add("direct" + bits, [=](benchmark::State& state) { direct(state, is8); });
        for (const float scale : {0.5f, 2.0f}) {
            add("resampled" + bits + (scale < 1 ? "/half" : "/double"),
                [=](benchmark::State& state) { resampled(state, is8, scale); });
        }
    }
    add("colour", colour);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
