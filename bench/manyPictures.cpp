// `velorn deblur --output-dir` for 200 small pictures, from its start to its end, against the calls
// of the library for the same pictures on as many threads.
#include "alternate.h"
#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/ImageFile.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"
#include "texturedPixels.h"
#include "velorn.hpp"

#include <atomic>
#include <thread>

namespace {

using velorn::ImageFile;

constexpr int kCount = 200;
constexpr int kWidth = 320;
constexpr int kHeight = 240;

void writePictures(const std::filesystem::path& folder) {
    std::filesystem::create_directory(folder);
    ImageFile picture(kWidth, kHeight, 3, 8);
    picture.samples() = texturedPixels(kWidth, kHeight);
    const auto bytes = picture.encode("picture.jpg");
    for (int i = 0; i < kCount; ++i) {
        vel::test::writeBytes(folder / (std::to_string(i) + ".jpg"), bytes);
    }
}

void callLibrary(const std::vector<ImageFile>& pictures, const velorn::api::Kernel& kernel) {
    VelornRestoreSettings settings = velorn::api::restoreSettings();
    settings.threads = 1;
    std::atomic<std::size_t> next = 0;
    std::vector<std::thread> threads;
    for (unsigned i = std::max(1u, std::thread::hardware_concurrency()); i > 0; --i) {
        threads.emplace_back([&] {
            for (std::size_t k = next++; k < pictures.size(); k = next++) {
                ImageFile picture = pictures[k];
                velorn::api::restore(picture.view(), picture.view(), {kernel}, settings);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void manyPictures(benchmark::State& state) {
    const vel::test::TemporaryFolder folder;
    writePictures(folder / "in");
    std::vector<ImageFile> pictures;
    for (int i = 0; i < kCount; ++i) {
        pictures.push_back(ImageFile::read(folder / "in" / (std::to_string(i) + ".jpg")));
    }
    const auto kernel =
        velorn::libraryKernel(velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 2.0f, 0.0f}));
    const std::vector<std::string> words{VELORN_PROGRAM, "deblur",       "--disc",      "2",
                                         folder / "in",  "--output-dir", folder / "out"};
    vel::bench::runAgainst(
        state, "library_calls",
        [&] {
            if (vel::test::runProgram(words).exitStatus != 0) {
                state.SkipWithError("the command failed");
            }
        },
        [&] { callLibrary(pictures, kernel); });
}

BENCHMARK(manyPictures)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

} // namespace

BENCHMARK_MAIN();
