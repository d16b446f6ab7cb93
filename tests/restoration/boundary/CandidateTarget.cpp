#include "restoration/boundary/CandidateTarget.h"

#include "restoration/boundary/VelornKernel.h"
#include "tests/restoration/boundary/failureOf.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>

namespace restoration {
namespace {

std::vector<FoundKernel> foundOnes(std::size_t count) {
    std::vector<FoundKernel> found(count);
    for (std::size_t i = 0; i < count; ++i) {
        found[i].kernel = {1, 1, {1.0f}, true};
        found[i].confidence = 0.1f * static_cast<float>(i + 1);
    }
    return found;
}

/// Arrays of a host with room for three kernels, filled with pointers to free.
struct Host {
    std::array<VelornKernel*, 3> kernels{};
    std::array<VelornFindReport, 3> reports{};

    Host() {
        for (VelornFindReport& report : reports) {
            report.size = sizeof report;
            report.confidence = -1.0f;
        }
    }
    ~Host() {
        for (const VelornKernel* kernel : kernels) {
            delete kernel;
        }
    }
};

TEST(CandidateTarget, ReceivesTheKernelsAndTheirReports) {
    Host host;
    EXPECT_EQ(CandidateTarget(host.kernels.data(), host.reports.data(), 3).write(foundOnes(2)), 2);
    EXPECT_NE(host.kernels[0], nullptr);
    EXPECT_NE(host.kernels[1], nullptr);
    EXPECT_EQ(host.kernels[2], nullptr);
    EXPECT_EQ(host.reports[0].confidence, 0.1f);
    EXPECT_EQ(host.reports[1].confidence, 0.2f);
    EXPECT_EQ(host.reports[1].candidates, 2);
    EXPECT_EQ(host.reports[2].confidence, -1.0f);
}

TEST(CandidateTarget, ReceivesAsManyAsFitAndLearnsTheNumberOfAll) {
    Host host;
    EXPECT_EQ(CandidateTarget(host.kernels.data(), host.reports.data(), 2).write(foundOnes(5)), 2);
    EXPECT_NE(host.kernels[1], nullptr);
    EXPECT_EQ(host.kernels[2], nullptr);
    EXPECT_EQ(host.reports[1].candidates, 5);
    EXPECT_EQ(host.reports[2].confidence, -1.0f);
}

TEST(CandidateTarget, NeedsNoReports) {
    Host host;
    EXPECT_EQ(CandidateTarget(host.kernels.data(), nullptr, 3).write(foundOnes(3)), 3);
    EXPECT_NE(host.kernels[2], nullptr);
}

TEST(CandidateTarget, ReportsOfHostsThatKnowFewerFieldsLieCloser) {
    constexpr std::size_t kFormer = offsetof(VelornFindReport, kind);
    Host host;
    alignas(VelornFindReport) std::array<std::byte, 3 * kFormer> records{};
    const auto former = static_cast<std::uint32_t>(kFormer);
    for (std::size_t i = 0; i < 3; ++i) {
        std::memcpy(&records[i * kFormer], &former, sizeof former);
    }
    auto* const reports = reinterpret_cast<VelornFindReport*>(records.data());
    EXPECT_EQ(CandidateTarget(host.kernels.data(), reports, 3).write(foundOnes(2)), 2);
    for (const auto& [index, expected] : {std::pair{0, 0.1f}, {1, 0.2f}, {2, 0.0f}}) {
        const std::byte* const record = &records[static_cast<std::size_t>(index) * kFormer];
        std::uint32_t size = 0;
        float confidence = 0.0f;
        std::memcpy(&size, record, sizeof size);
        std::memcpy(&confidence, record + offsetof(VelornFindReport, confidence),
                    sizeof confidence);
        EXPECT_EQ(size, former);
        EXPECT_EQ(confidence, expected) << index;
    }
}

TEST(CandidateTarget, WrongArraysAreRefused) {
    Host host;
    const auto failure = [&](VelornKernel** kernels, std::int32_t capacity) {
        return test::failureOf([&] { CandidateTarget(kernels, host.reports.data(), capacity); });
    };
    EXPECT_EQ(failure(nullptr, 3), "kernels is null");
    EXPECT_EQ(failure(host.kernels.data(), 0), "capacity is 0, but must be at least 1");
    host.reports[2].size = offsetof(VelornFindReport, kind);
    EXPECT_EQ(failure(host.kernels.data(), 3),
              "reports[2].size is 16, but must be 44, that of the first report");
    EXPECT_EQ(failure(host.kernels.data(), 2), "");
    host.reports[0].size = 17;
    EXPECT_EQ(failure(host.kernels.data(), 2),
              "reports->size is 17, but must be 44, the size of the record");
}

} // namespace
} // namespace restoration
