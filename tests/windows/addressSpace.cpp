// The address space that a picture of 24 megapixels needs. A 32-bit process has 2 GiB.
#include "tests/frame/LoadedLibrary.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <psapi.h>
#include <vector>

namespace {

using vel::test::LoadedLibrary;

constexpr int kWidth = 6000;
constexpr int kHeight = 4000;
constexpr double kMebibyte = 1024.0 * 1024.0;

/// The sum over all regions; the system's own figure may be a second old.
std::uint64_t freeAddressSpace() {
    std::uint64_t sum = 0;
    const char* address = nullptr;
    MEMORY_BASIC_INFORMATION region{};
    while (VirtualQuery(address, &region, sizeof region) != 0) {
        sum += region.State == MEM_FREE ? region.RegionSize : 0;
        address = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
    }
    return sum;
}

int32_t keepSmallest(int32_t, int32_t, void* smallest) {
    auto& value = *static_cast<std::uint64_t*>(smallest);
    value = std::min(value, freeAddressSpace());
    return 1;
}

std::vector<std::uint16_t> barsAndSlopes() {
    std::vector<std::uint16_t> samples;
    samples.reserve(static_cast<std::size_t>(kWidth) * kHeight * 3);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < 3 * kWidth; ++x) {
            const int bar = (x / 60 + y / 35) % 2 == 0 ? 9000 : 0;
            samples.push_back(static_cast<std::uint16_t>(4000 + bar + 3 * y + x % 3 * 500));
        }
    }
    return samples;
}

TEST(AddressSpace, AllStagesOnTwentyFourMegapixelsOfSixteenBitsNeedLessThanOneGibibyte) {
    const LoadedLibrary library;
    auto* const deblurSharpen = VELORN_FIND(library, ornDeblurSharpen);
    auto* const createKernel = VELORN_FIND(library, ornCreateKernel);

    const std::uint64_t freeBefore = freeAddressSpace();
    const std::vector<std::uint16_t> source = barsAndSlopes();
    std::vector<std::uint16_t> target(source.size());
    std::uint64_t freeAtWorst = freeAddressSpace();
    const std::uint64_t freeWithPictures = freeAtWorst;
    std::vector<float> values(81);
    KernelRecord kernel{0, 0, 0, 0, values.data()};
    ASSERT_EQ(createKernel(1, 4.0f, 0.0f, &kernel), VELORN_OK);
    ImageRecord image{psC3U16,    source.data(), 6 * kWidth, target.data(),
                      6 * kWidth, kWidth,        kHeight};
    ProgressRecord progress{100, 100, &keepSmallest, &freeAtWorst, 0};
    ASSERT_EQ(deblurSharpen(&progress, &image, &kernel, 1, 8000.0f, 0.5f, 0.5f, 0.85f, 0.5f, 1.5f,
                            0.005f, 0.3f, 0.2f),
              VELORN_OK);

    // The last row of tiles is written.
    const auto last = target.end() - 3 * kWidth;
    EXPECT_GT(std::count_if(last, target.end(), [](std::uint16_t v) { return v > 8000; }), kWidth);

    PROCESS_MEMORY_COUNTERS counters{};
    ASSERT_TRUE(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters));
    std::printf("address space: the pictures take %.0f MiB, the call takes %.0f MiB more; largest "
                "working set %.0f MiB\n",
                static_cast<double>(freeBefore - freeWithPictures) / kMebibyte,
                static_cast<double>(freeWithPictures - freeAtWorst) / kMebibyte,
                static_cast<double>(counters.PeakWorkingSetSize) / kMebibyte);
    EXPECT_LT(freeAtWorst, freeWithPictures) << "the call reported progress";
    // Half of the address space remains for the host.
    EXPECT_LT(freeBefore - freeAtWorst, 1024u * 1024u * 1024u);
}

} // namespace
