#include "hosts/command/batch/BatchReport.h"

#include <gtest/gtest.h>

namespace {

using velorn::BatchReport;
using namespace std::chrono_literals;

TEST(BatchReport, PartsThatAreZeroAreLeftOut) {
    BatchReport report;
    EXPECT_EQ(report.text(31s), "velorn: 0 restored in 31 s\n");
    report.addRestored();
    report.addRestored();
    report.addSkipped();
    EXPECT_EQ(report.text(31s), "velorn: 2 restored, 1 skipped in 31 s\n");
    report.addLeft(7);
    EXPECT_EQ(report.text(31s), "velorn: 2 restored, 1 skipped, 7 left in 31 s\n");
}

TEST(BatchReport, FailuresAreListedInTheOrderOfTheirPlaces) {
    BatchReport report;
    report.addFailed(9, "'b.jpg': second");
    report.addFailed(2, "'a.jpg': first,\n in two lines");
    EXPECT_EQ(report.text(1s), "velorn: 'a.jpg': first, in two lines\nvelorn: 'b.jpg': second\n"
                               "velorn: 0 restored, 2 failed in 1 s\n");
}

TEST(BatchReport, ExitStatusDistinguishesSomeFailuresFromAll) {
    BatchReport report;
    EXPECT_EQ(report.exitStatus(), 0);
    report.addFailed(0, "a");
    EXPECT_EQ(report.exitStatus(), 1);
    report.addSkipped();
    EXPECT_EQ(report.exitStatus(), 3);
}

} // namespace
