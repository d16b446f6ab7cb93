#include "hosts/command/library/statusText.h"

#include "velorncore10.h"

#include <gtest/gtest.h>

namespace {

using velorn::statusText;

TEST(StatusText, TextFailureGivesTheTextOfTheLibrary) {
    ProgressRecord progress{};
    ASSERT_EQ(ornDeblurSharpen(&progress, nullptr, nullptr, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0),
              VELORN_TEXT_FAILURE);
    EXPECT_NE(std::string(getErrMsg()), "");
    EXPECT_EQ(statusText(VELORN_TEXT_FAILURE), getErrMsg());
}

TEST(StatusText, OtherStatusesAreNamedOrNumbered) {
    EXPECT_EQ(statusText(VELORN_TILE_GAP), "the kernel is too large for the picture's tiles");
    EXPECT_EQ(statusText(VELORN_FAILURE), "out of memory, or an unknown failure (status -1000)");
    EXPECT_EQ(statusText(VELORN_SMOOTHER_MEMORY), "out of memory (status -880)");
    EXPECT_EQ(statusText(VELORN_GUARD_DAMAGED), "status -897");
}

} // namespace
