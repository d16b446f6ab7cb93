#include "restoration/boundary/findReport.h"

#include <gtest/gtest.h>
#include <utility>

namespace restoration {
namespace {

/// A kernel whose weights above 0 fill two columns and three rows.
FoundKernel found(KernelKind kind) {
    FoundKernel result;
    result.kernel = {5, 5, std::vector<float>(25), true};
    result.kernel.row(1)[1] = 0.5f;
    result.kernel.row(3)[2] = 0.5f;
    result.kind = kind;
    return result;
}

TEST(FindReport, TellsTheKindOfTheKernel) {
    using Shape = KernelKind::Shape;
    for (const auto& [shape, kind] : {std::pair{Shape::None, VELORN_KIND_NONE},
                                      {Shape::Gaussian, VELORN_KIND_GAUSSIAN},
                                      {Shape::Disc, VELORN_KIND_DISC},
                                      {Shape::Motion, VELORN_KIND_MOTION}}) {
        const VelornFindReport report = findReport(found({shape, 7.5f, -30.0f}), 1);
        EXPECT_EQ(report.kind, kind);
        EXPECT_EQ(report.extent, 7.5f);
        EXPECT_EQ(report.angle, -30.0f);
    }
}

TEST(FindReport, ExtentOfAFreeKernelIsTheLongerSideOfItsWeights) {
    const VelornFindReport report = findReport(found({}), 1);
    EXPECT_EQ(report.kind, VELORN_KIND_FREE);
    EXPECT_EQ(report.extent, 3.0f);
}

TEST(FindReport, HasTheFiguresOfTheSearch) {
    FoundKernel kernel = found({});
    kernel.confidence = 0.25f;
    kernel.agreement = 0.5f;
    kernel.misfit = 2.0f;
    kernel.score = -1.5;
    kernel.parts = 3;
    kernel.partAgreement = 0.75f;
    const VelornFindReport report = findReport(kernel, 4);
    EXPECT_EQ(report.confidence, 0.25f);
    EXPECT_EQ(report.agreement, 0.5f);
    EXPECT_EQ(report.misfit, 2.0f);
    EXPECT_EQ(report.score, -1.5f);
    EXPECT_EQ(report.parts, 3);
    EXPECT_EQ(report.partAgreement, 0.75f);
    EXPECT_EQ(report.candidates, 4);
    EXPECT_EQ(report.parts, 3);
    EXPECT_EQ(report.partAgreement, 0.75f);
}

} // namespace
} // namespace restoration
