#include "restoration/boundary/records.h"

#include "tests/restoration/boundary/failureOf.h"

#include <gtest/gtest.h>

namespace restoration {

/// A record of a later version: the first version ended after `first`.
struct GrownRecord {
    std::uint32_t size;
    std::int32_t first;
    std::int32_t second;
};

template <>
inline constexpr std::uint32_t kKnownSizes<GrownRecord>[] = {8, 12};

namespace {

using test::failureOf;

TEST(Records, FieldsThatTheHostDoesNotKnowHaveTheirDefaults) {
    const GrownRecord host{8, 5, 6};
    const GrownRecord read = readRecord(host, {12, 1, 2});
    EXPECT_EQ(read.size, 12u);
    EXPECT_EQ(read.first, 5);
    EXPECT_EQ(read.second, 2);
}

TEST(Records, FieldsThatTheHostDoesNotKnowAreNotWritten) {
    GrownRecord host{8, 5, 6};
    writeRecord({12, 1, 2}, host);
    EXPECT_EQ(host.size, 8u);
    EXPECT_EQ(host.first, 1);
    EXPECT_EQ(host.second, 6);
}

TEST(Records, SizesOfAllVersionsPass) {
    for (const std::uint32_t size : {8u, 12u}) {
        const GrownRecord host{size, 0, 0};
        EXPECT_EQ(failureOf([&] { requireRecord(&host, "record"); }), "");
    }
}

TEST(Records, OtherSizesFail) {
    for (const std::uint32_t size : {0u, 4u, 10u, 16u}) {
        const GrownRecord host{size, 0, 0};
        EXPECT_EQ(failureOf([&] { requireRecord(&host, "record"); }),
                  "record->size is " + std::to_string(size) +
                      ", but must be 12, the size of the record");
    }
}

TEST(Records, OfTheFirstVersionPass) {
    VelornFindSettings settings{};
    settings.size = offsetof(VelornFindSettings, userData) + sizeof(void*);
    EXPECT_EQ(failureOf([&] { requireRecord(&settings, "settings"); }), "");
    VelornFindReport report{};
    report.size = 16;
    EXPECT_EQ(failureOf([&] { requireRecord(&report, "report"); }), "");
}

} // namespace
} // namespace restoration
