#pragma once

#include <gtest/gtest.h>
#include <hwy/highway.h>

namespace vel::test {

/// Runs `check` on every processor variant that this machine supports, then selects the best one
/// again. A failure names the variant.
template <class Check>
void forEachTarget(Check&& check) {
    for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
        SCOPED_TRACE(hwy::TargetName(target));
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
        check();
    }
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

} // namespace vel::test
