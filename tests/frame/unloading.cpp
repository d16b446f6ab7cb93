// Hosts that close the library while their process continues.
#include "tests/frame/LoadedLibrary.h"

#include <thread>
#include <vector>

namespace {

using vel::test::LoadedLibrary;

void useAllThreads(const LoadedLibrary& library) {
    const std::vector<std::uint8_t> source(64 * 64 * 3, 100);
    std::vector<std::uint8_t> target(source.size());
    ImageRecord image{psC3U8, source.data(), 192, target.data(), 192, 64, 64};
    std::vector<float> values(25, 0.04f);
    KernelRecord kernel{5, 5, 2, 2, values.data()};
    ProgressRecord progress{100, 100, nullptr, nullptr, 0};
    auto* const deblurSharpen = VELORN_FIND(library, ornDeblurSharpen);
    EXPECT_EQ(deblurSharpen(&progress, &image, &kernel, 1, 20000.0f, 0.5f, 0.5f, 0.85f, 0.0f, 1.5f,
                            0.005f, 0.3f, 0.0f),
              VELORN_OK);
}

TEST(Unloading, ThreadsOfTheRuntimeOutliveTheLibraryHandle) {
    for (int i = 0; i < 3; ++i) {
        useAllThreads(LoadedLibrary());
    }
    // Another calling thread has a team of its own.
    std::thread([] { useAllThreads(LoadedLibrary()); }).join();
    useAllThreads(LoadedLibrary());
}

} // namespace
