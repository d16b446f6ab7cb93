#include "tests/velorn/failure.h"
#include "tests/velorn/Scene.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace velorntest {
namespace {

constexpr Layout kSmall{.width = 140, .height = 120, .channels = 1};

/// Arrays for kernels and reports, with a pointer in each element that is not to be freed.
struct Candidates {
    std::array<VelornKernel*, 40> kernels{};
    std::array<VelornFindReport, 40> reports{};
    std::int32_t count = 77;

    Candidates() {
        for (std::size_t i = 0; i < kernels.size(); ++i) {
            kernels[i] = reinterpret_cast<VelornKernel*>(&reports[i]);
            reports[i].size = sizeof(VelornFindReport);
            reports[i].confidence = -1.0f;
        }
    }

    VelornStatus find(const VelornPicture& picture, const VelornFindSettings* settings = nullptr,
                      std::int32_t capacity = 40) {
        return velornFindCandidates(&picture, settings, kernels.data(), reports.data(), capacity,
                                    &count);
    }

    bool areUntouched() const {
        return std::ranges::all_of(reports, [](const VelornFindReport& report) {
            return report.confidence == -1.0f && report.candidates == 0;
        });
    }

    /// The kernels of the call, which the object frees.
    std::vector<HostKernel> taken() {
        std::vector<HostKernel> owned;
        for (std::int32_t i = 0; i < count; ++i) {
            owned.emplace_back(kernels[static_cast<std::size_t>(i)]);
        }
        return owned;
    }
};

HostPicture blurredPicture() {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 2.0f);
    return scenePicture(kSmall, disc.get());
}

TEST(FindCandidates, FirstOneIsThatOfFindKernel) {
    HostPicture picture = blurredPicture();
    const VelornPicture view = picture.view();
    VelornKernel* kernel = nullptr;
    VelornFindReport report{};
    report.size = sizeof report;
    ASSERT_EQ(velornFindKernel(&view, nullptr, &kernel, &report), VELORN_STATUS_OK);
    const HostKernel expected(kernel);

    Candidates candidates;
    ASSERT_EQ(candidates.find(view), VELORN_STATUS_OK) << velornLastMessage();
    const std::vector<HostKernel> found = candidates.taken();
    EXPECT_EQ(valuesOf(found.front().get()), valuesOf(expected.get()));
    EXPECT_EQ(candidates.reports[0].confidence, report.confidence);
    EXPECT_EQ(candidates.reports[0].score, report.score);
    EXPECT_EQ(candidates.reports[0].candidates, report.candidates);
}

TEST(FindCandidates, EveryKernelHasItsReportAndTheRestOfTheArraysIsEmpty) {
    HostPicture picture = blurredPicture();
    Candidates candidates;
    ASSERT_EQ(candidates.find(picture.view()), VELORN_STATUS_OK);
    const std::vector<HostKernel> found = candidates.taken();
    ASSERT_GE(candidates.count, 3);
    ASSERT_LE(candidates.count, VELORN_MOST_CANDIDATES);
    for (std::size_t i = 0; i < candidates.kernels.size(); ++i) {
        const bool isFound = i < static_cast<std::size_t>(candidates.count);
        EXPECT_EQ(candidates.kernels[i] != nullptr, isFound);
        EXPECT_EQ(candidates.reports[i].confidence >= 0.0f, isFound);
        EXPECT_EQ(candidates.reports[i].candidates, isFound ? candidates.count : 0);
    }
    EXPECT_NE(valuesOf(found[0].get()), valuesOf(found[1].get()));
}

TEST(FindCandidates, CapacityLimitsTheKernels) {
    HostPicture picture = blurredPicture();
    Candidates candidates;
    ASSERT_EQ(candidates.find(picture.view(), nullptr, 2), VELORN_STATUS_OK);
    const std::vector<HostKernel> found = candidates.taken();
    EXPECT_EQ(candidates.count, 2);
    EXPECT_GE(candidates.reports[0].candidates, 3);
    EXPECT_EQ(candidates.reports[2].confidence, -1.0f);
}

TEST(FindCandidates, StartIsOneOfThem) {
    HostPicture picture = blurredPicture();
    // Unlike anything that a search finds; the sum is 1 in floats.
    const std::vector<float> weights{0.5f, 0.0f, 0.25f, 0.0f, 0.125f, 0.0f, 0.0f, 0.0f, 0.125f};
    VelornKernel* start = nullptr;
    ASSERT_EQ(velornKernelFromValues(weights.data(), 3, 3, &start), VELORN_STATUS_OK);
    const HostKernel owned(start);
    VelornFindSettings settings{};
    settings.size = sizeof settings;
    ASSERT_EQ(velornFindDefaults(&settings), VELORN_STATUS_OK);
    settings.start = start;
    Candidates candidates;
    ASSERT_EQ(candidates.find(picture.view(), &settings), VELORN_STATUS_OK) << velornLastMessage();
    const std::vector<HostKernel> found = candidates.taken();
    EXPECT_TRUE(std::ranges::any_of(found, [&](const HostKernel& kernel) {
        std::vector<float> positive = valuesOf(kernel.get());
        std::erase(positive, 0.0f);
        return positive == std::vector<float>{0.5f, 0.25f, 0.125f, 0.125f};
    }));
}

TEST(FindCandidates, ReportsMayBeNull) {
    HostPicture picture = blurredPicture();
    const VelornPicture view = picture.view();
    Candidates candidates;
    ASSERT_EQ(velornFindCandidates(&view, nullptr, candidates.kernels.data(), nullptr, 40,
                                   &candidates.count),
              VELORN_STATUS_OK);
    EXPECT_GE(candidates.taken().size(), 3u);
}

TEST(FindCandidatesFailures, GiveNoKernels) {
    HostPicture picture(kSmall);
    const VelornPicture view = picture.view();
    Candidates candidates;
    EXPECT_VELORN_FAILURE(candidates.find(view), VELORN_STATUS_NO_KERNEL,
                          "the picture has too few edges to find a kernel");
    EXPECT_EQ(candidates.kernels, (std::array<VelornKernel*, 40>{}));
    EXPECT_EQ(candidates.count, 0);
    EXPECT_TRUE(candidates.areUntouched());
}

TEST(FindCandidatesFailures, OfCancelledCallsGiveNoKernels) {
    HostPicture picture = blurredPicture();
    for (const double until : {0.0, 0.5, 1.0}) {
        double limit = until;
        VelornFindSettings settings{};
        settings.size = sizeof settings;
        ASSERT_EQ(velornFindDefaults(&settings), VELORN_STATUS_OK);
        settings.userData = &limit;
        settings.progress = [](double done, void* userData) -> std::int32_t {
            return done < *static_cast<double*>(userData);
        };
        Candidates candidates;
        EXPECT_VELORN_FAILURE(candidates.find(picture.view(), &settings), VELORN_STATUS_CANCELLED,
                              "cancelled");
        EXPECT_EQ(candidates.kernels, (std::array<VelornKernel*, 40>{}));
        EXPECT_EQ(candidates.count, 0);
        EXPECT_TRUE(candidates.areUntouched());
    }
}

TEST(FindCandidatesFailures, WrongArguments) {
    HostPicture picture(kSmall);
    const VelornPicture view = picture.view();
    Candidates candidates;
    EXPECT_VELORN_INVALID(velornFindCandidates(nullptr, nullptr, candidates.kernels.data(), nullptr,
                                               40, &candidates.count),
                          "picture is null");
    EXPECT_EQ(candidates.kernels[39], nullptr);
    EXPECT_VELORN_INVALID(
        velornFindCandidates(&view, nullptr, nullptr, nullptr, 40, &candidates.count),
        "kernels is null");
    EXPECT_VELORN_INVALID(
        velornFindCandidates(&view, nullptr, candidates.kernels.data(), nullptr, 40, nullptr),
        "count is null");
    for (const std::int32_t capacity : {0, -1}) {
        const std::string message =
            "capacity is " + std::to_string(capacity) + ", but must be at least 1";
        EXPECT_VELORN_INVALID(candidates.find(view, nullptr, capacity), message.c_str());
    }
    candidates.reports[1].size = offsetof(VelornFindReport, kind);
    EXPECT_VELORN_INVALID(candidates.find(view),
                          "reports[1].size is 16, but must be 44, that of the first report");
}

} // namespace
} // namespace velorntest
