#include "hosts/command/batch/BatchProgress.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using velorn::BatchProgress;

TEST(BatchProgress, PicturesInWorkCountByWhatIsDone) {
    std::ostringstream terminal;
    BatchProgress progress(4, terminal, true);
    EXPECT_EQ(progress.left(), 4.0);
    progress.finish(2);
    progress.set(0, 0.5);
    progress.set(1, 7.0);
    EXPECT_EQ(progress.left(), 1.5);
    progress.draw();
    EXPECT_NE(terminal.str().find(" 62% 1/4"), std::string::npos) << terminal.str();
}

TEST(BatchProgress, TextIsPrintedOnALineOfItsOwn) {
    std::ostringstream terminal;
    BatchProgress progress(1, terminal, true);
    progress.draw();
    progress.print("velorn: warning\n");
    EXPECT_TRUE(terminal.str().ends_with(" \rvelorn: warning\n")) << terminal.str();
}

} // namespace
