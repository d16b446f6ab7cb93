// A call whose scratch images are overwritten while it runs, tested through the shared library. The
// callback finds the guard rows in the memory of the process.
#if defined(__linux__)

#include "tests/frame/DeblurCalls.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

using namespace vel::test;

constexpr std::uint32_t kPattern = 0x6D676EFF;
/// The images of the detail stage are as wide as a tile.
constexpr std::size_t kWidth = 256;

/// Overwrites one element of every guard row in `begin` .. `end` and returns their number.
int damageGuardRows(std::uintptr_t begin, std::uintptr_t end) {
    constexpr std::size_t kAlignment = 32;
    int count = 0;
    for (std::uintptr_t at = begin; at + kWidth * sizeof kPattern <= end; at += kAlignment) {
        auto* const row = reinterpret_cast<std::uint32_t*>(at);
        if (std::all_of(row, row + kWidth, [](std::uint32_t word) { return word == kPattern; })) {
            row[kWidth - 1] = 0;
            ++count;
        }
    }
    return count;
}

int damageGuardRowsOfTheProcess() {
    const std::unique_ptr<FILE, int (*)(FILE*)> maps(std::fopen("/proc/self/maps", "r"),
                                                     std::fclose);
    int count = 0;
    char line[512];
    while (maps && std::fgets(line, sizeof line, maps.get()) != nullptr) {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char access[5] = {};
        if (std::sscanf(line, "%" SCNxPTR "-%" SCNxPTR " %4s", &begin, &end, access) == 3 &&
            std::strncmp(access, "rw", 2) == 0) {
            count += damageGuardRows(begin, end);
        }
    }
    return count;
}

/// Damages the guard rows in the third callback and cancels in the callback of a given number.
struct Vandal {
    int cancelAt = 0;
    int calls = 0;
    int damaged = 0;

    static int32_t callBack(int32_t, int32_t, void* userData) {
        auto& self = *static_cast<Vandal*>(userData);
        if (++self.calls == 3) {
            self.damaged = damageGuardRowsOfTheProcess();
        }
        return self.calls == self.cancelAt ? 0 : 1;
    }
};

class GuardRows : public DeblurCalls {
protected:
    void SetUp() override {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP()
            << "the sanitizer maps too much memory to search, and reports the images' leak";
#endif
    }
    int32_t runWith(Vandal& vandal) {
        ProgressRecord progress{100, 100, &Vandal::callBack, &vandal, 0};
        return run(source, target, sides(3, 3), {}, &progress);
    }

    const cv::Mat source = noise(cv::Size(100, 80), CV_8UC3, 255);
    cv::Mat target = flat(source.size(), 77);
};

TEST_F(GuardRows, DamageIsTheStatusOfAFinishedCall) {
    Vandal vandal;
    EXPECT_EQ(runWith(vandal), VELORN_GUARD_DAMAGED);
    EXPECT_GE(vandal.damaged, 4);
    EXPECT_EQ(vandal.calls, 5);
    EXPECT_EQ(largestDifference(source, target), 0);
    EXPECT_STREQ(errorMessage(), "");
    EXPECT_EQ(run(source, target, sides(3, 3), {}), VELORN_OK);
}

TEST_F(GuardRows, DamageIsTheStatusOfACancelledCall) {
    Vandal vandal;
    vandal.cancelAt = 3;
    EXPECT_EQ(runWith(vandal), VELORN_GUARD_DAMAGED);
    EXPECT_GE(vandal.damaged, 4);
    EXPECT_EQ(run(source, target, sides(3, 3), {}), VELORN_OK);
}

} // namespace

#endif
