#include "velimproclib/primitives/base/ProcessorVariants.h"

#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <vector>

namespace {

using namespace vel;

/// The place of the selected variant in the dispatch tables; faster variants come first.
std::size_t selectedPlace() {
    return hwy::GetChosenTarget().GetIndex();
}

/// Selects `target` and returns its place.
std::size_t select(std::int64_t target) {
    hwy::GetChosenTarget().Update(target);
    return selectedPlace();
}

/// The variants that are compiled and run on this processor. Faster ones have lower bits.
std::vector<std::int64_t> runnableTargets() {
    const auto targets = hwy::SupportedAndGeneratedTargets();
    std::vector<std::int64_t> sorted(targets.begin(), targets.end());
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

TEST(ProcessorVariants, SelectionReplacesEveryVariantByTheFastest) {
    const std::vector<std::int64_t> targets = runnableTargets();
    const std::size_t fastest = select(targets.front());
    for (const std::int64_t target : targets) {
        SCOPED_TRACE(hwy::TargetName(target));
        EXPECT_EQ(select(target) == fastest, target == targets.front());
        selectProcessorVariants();
        EXPECT_EQ(selectedPlace(), fastest);
    }
}

#if defined(__x86_64__) || defined(__i386__)
TEST(ProcessorVariants, ProcessorWithAvx2RunsTheAvx2VariantOrAFasterOne) {
    const std::vector<std::int64_t> targets = runnableTargets();
    const bool isCompiled = std::find(targets.begin(), targets.end(), HWY_AVX2) != targets.end();
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma") ||
        !__builtin_cpu_supports("bmi2") || !isCompiled) {
        GTEST_SKIP() << "no AVX2 on this processor or in this build";
    }
    const std::size_t avx2 = select(HWY_AVX2);
    select(targets.back());
    selectProcessorVariants();
    EXPECT_LE(selectedPlace(), avx2);
}
#endif

TEST(ProcessorVariants, PrimitivesRunBeforeAndAfterTheSelection) {
    hwy::GetChosenTarget().DeInit();
    float plane[3] = {1.0f, 2.0f, 3.0f};
    EXPECT_EQ(addConstInPlaceF32(1.0f, plane, 12, 3, 1), kOk);
    selectProcessorVariants();
    EXPECT_EQ(addConstInPlaceF32(1.0f, plane, 12, 3, 1), kOk);
    EXPECT_EQ(plane[0], 3.0f);
    EXPECT_EQ(plane[2], 5.0f);
}

} // namespace
