// Measures the encoding of restored pictures of 1, 6 and 24 megapixels in every format.
//
//   encoding  milliseconds of an encoding with its metadata, and `restoring`, its time divided by
//             that of the restoration of the same picture from a disc of radius 2, measured
//             alternately in one run on the same number of threads; `megabytes` of the file
//
//   bench_encoding --benchmark_filter=megapixels:24 [PHOTOGRAPH...]
//
// The pictures are mosaics of the photographs, softened, with noise; without photographs, of a
// drawn scene.
#include "bench/alternate.h"
#include "hosts/command/codecs/encodePixels.h"
#include "hosts/command/pictures/codecThreads.h"
#include "hosts/command/pictures/ImageFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/Scene.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <random>

namespace {

using velorn::EncoderSettings;
using velorn::ImageFile;
using velorn::Pixels;
using Words = std::vector<std::uint16_t>;

/// A file format and what the encoding inherits from a source of the same format.
struct Encoding {
    const char* name;
    const char* file;
    int bits;
    bool isLossless = false;
    const char* tiffCompression = "";
};

constexpr std::array kEncodings{
    Encoding{"JPEG", "a.jpg", 8},
    Encoding{"PNG", "a.png", 8},
    Encoding{"PNG", "a.png", 16},
    Encoding{"TIFF", "a.tif", 8},
    Encoding{"TIFF", "a.tif", 16},
    Encoding{"TIFF_lzw", "a.tif", 8, false, "lzw"},
    Encoding{"TIFF_lzw", "a.tif", 16, false, "lzw"},
    Encoding{"WebP", "a.webp", 8},
    Encoding{"WebP_lossless", "a.webp", 8, true},
    Encoding{"PNM", "a.ppm", 8},
    Encoding{"PNM", "a.ppm", 16},
    Encoding{"BMP", "a.bmp", 8},
    Encoding{"TGA", "a.tga", 8},
    Encoding{"EXR", "a.exr", 16},
    Encoding{"HDR", "a.hdr", 16},
};

std::vector<Pixels>& photographs() {
    static std::vector<Pixels> all;
    return all;
}

Pixels drawnScene() {
    Pixels pixels = velorn::blackPixels({1200, 800, 3, 16});
    const cv::Mat scene = velorn::tools::drawScene(pixels.width, pixels.height, 0, 1);
    auto& samples = std::get<Words>(pixels.samples);
    const auto* values = scene.ptr<float>();
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::uint16_t>(values[i] * 257.0f);
    }
    return pixels;
}

Pixels photographIn(const char* path) {
    const ImageFile file = ImageFile::read(path);
    const auto shape = file.shape();
    return velorn::withShape({shape.width, shape.height, shape.channels, file.samples()},
                             {shape.width, shape.height, 3, 16});
}

/// Lays `part` with its left upper corner at (x, y), as far as it fits.
void lay(const Pixels& part, int x, int y, bool isMirrored, Pixels& mosaic) {
    const auto& from = std::get<Words>(part.samples);
    auto& to = std::get<Words>(mosaic.samples);
    for (int r = 0; r < std::min(part.height, mosaic.height - y); ++r) {
        for (int c = 0; c < std::min(part.width, mosaic.width - x); ++c) {
            const int column = isMirrored ? part.width - 1 - c : c;
            const auto source = static_cast<std::size_t>(r) * static_cast<std::size_t>(part.width) +
                                static_cast<std::size_t>(column);
            const auto target =
                static_cast<std::size_t>(y + r) * static_cast<std::size_t>(mosaic.width) +
                static_cast<std::size_t>(x + c);
            std::copy_n(&from[3 * source], 3, &to[3 * target]);
        }
    }
}

/// Means of three by three pixels, and noise of one level of 255.
void softenAndAddNoise(Pixels& pixels) {
    auto& samples = std::get<Words>(pixels.samples);
    const Words sharp = samples;
    const auto row = 3 * static_cast<std::size_t>(pixels.width);
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0.0f, 257.0f);
    for (std::size_t i = row + 3; i < samples.size() - row - 3; ++i) {
        float sum = 0.0f;
        for (const std::size_t line : {i - row, i, i + row}) {
            sum += static_cast<float>(sharp[line - 3] + sharp[line] + sharp[line + 3]);
        }
        samples[i] =
            static_cast<std::uint16_t>(std::clamp(sum / 9.0f + noise(random), 0.0f, 65535.0f));
    }
}

Pixels mosaicOf(int width, int height) {
    const std::vector<Pixels>& parts = photographs();
    Pixels mosaic = velorn::blackPixels({width, height, 3, 16});
    const int rowHeight = std::ranges::min(parts, {}, &Pixels::height).height;
    std::size_t next = 0;
    for (int y = 0; y < height; y += rowHeight) {
        for (int x = 0; x < width; ++next) {
            const Pixels& part = parts[next % parts.size()];
            lay(part, x, y, next / parts.size() % 2 != 0, mosaic);
            x += part.width;
        }
    }
    softenAndAddNoise(mosaic);
    return mosaic;
}

/// The picture in a file of the format of `encoding`.
ImageFile sourceOf(const Encoding& encoding, const Pixels& pixels) {
    const vel::test::TemporaryFolder folder;
    EncoderSettings settings;
    settings.isLossless = encoding.isLossless;
    settings.tiffCompression = encoding.tiffCompression;
    const bool inherits = settings.isLossless || !settings.tiffCompression.empty();
    const auto path = folder / (inherits ? encoding.file : "a.ppm");
    const auto& format = velorn::outputFormatOfPath(path);
    vel::test::writeBytes(
        path, velorn::encodePixels(
                  velorn::withShape(pixels, {pixels.width, pixels.height, 3, encoding.bits}),
                  format, settings, {}));
    return ImageFile::read(path);
}

void encoding(benchmark::State& state) {
    const Encoding& encoding = kEncodings[static_cast<std::size_t>(state.range(0))];
    const int height = state.range(1) == 1 ? 800 : state.range(1) == 6 ? 2000 : 4000;
    const auto threads = static_cast<int>(state.range(2));
    const ImageFile source = sourceOf(encoding, mosaicOf(height * 3 / 2, height));
    const auto kernel = velorn::api::Kernel::of(VELORN_BLUR_DISC, 2.0f);
    VelornRestoreSettings settings = velorn::api::restoreSettings();
    settings.threads = threads;
    velorn::setCodecThreads(threads);
    ImageFile restored = source;
    std::size_t size = 0;
    vel::bench::runAgainst(
        state, "restoring",
        [&] { size = restored.encode(velorn::outputFormatOfPath(encoding.file), {}).file.size(); },
        [&] { velorn::api::restore(source.view(), restored.view(), {kernel}, settings); });
    state.counters["megabytes"] = 1e-6 * static_cast<double>(size);
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (int i = 1; i < argc; ++i) {
        photographs().push_back(photographIn(argv[i]));
    }
    if (photographs().empty()) {
        photographs().push_back(drawnScene());
    }
    for (std::size_t i = 0; i < kEncodings.size(); ++i) {
        const std::string name =
            std::string(kEncodings[i].name) + "_" + std::to_string(kEncodings[i].bits);
        benchmark::RegisterBenchmark(name.c_str(), encoding)
            ->ArgNames({"format", "megapixels", "threads"})
            ->ArgsProduct({{static_cast<std::int64_t>(i)}, {1, 6, 24}, {2}})
            ->Iterations(3)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::RunSpecifiedBenchmarks();
}
