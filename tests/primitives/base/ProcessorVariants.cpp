#include "velimproclib/primitives/base/ProcessorVariants.h"

#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"

#include <gtest/gtest.h>
#include <hwy/highway.h>

namespace {

using namespace vel;

TEST(ProcessorVariants, TheChoiceIsTheBestVariantThatTheMachineRuns) {
    selectProcessorVariants();
    auto& chosen = hwy::GetChosenTarget();
    const auto best = chosen.GetIndex();
    hwy::ChosenTarget expected;
    expected.Update(hwy::SupportedTargets());
    EXPECT_EQ(best, expected.GetIndex());
    selectProcessorVariants();
    EXPECT_EQ(chosen.GetIndex(), best) << "a second call changes nothing";
}

TEST(ProcessorVariants, PrimitivesRunBeforeAndAfterTheChoice) {
    hwy::GetChosenTarget().DeInit();
    float plane[3] = {1.0f, 2.0f, 3.0f};
    EXPECT_EQ(addConstInPlaceF32(1.0f, plane, 12, 3, 1), kOk);
    selectProcessorVariants();
    EXPECT_EQ(addConstInPlaceF32(1.0f, plane, 12, 3, 1), kOk);
    EXPECT_EQ(plane[0], 3.0f);
    EXPECT_EQ(plane[2], 5.0f);
}

} // namespace
