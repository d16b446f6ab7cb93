#include "tests/velorn/failure.h"

#include <cstring>

namespace velorntest {
namespace {

TEST(RestoreDefaults, AreTheDocumentedValues) {
    VelornRestoreSettings settings;
    std::memset(&settings, 0x5A, sizeof settings);
    settings.size = sizeof settings;
    ASSERT_EQ(velornRestoreDefaults(&settings), VELORN_STATUS_OK);
    EXPECT_EQ(settings.size, sizeof settings);
    EXPECT_EQ(settings.strength, VELORN_AUTOMATIC);
    EXPECT_EQ(settings.chromaStrength, VELORN_AUTOMATIC);
    EXPECT_EQ(settings.alpha, VELORN_AUTOMATIC);
    EXPECT_EQ(settings.limit, VELORN_AUTOMATIC);
    EXPECT_EQ(settings.edgeRadius, 0.85f);
    EXPECT_EQ(settings.edgeSlope, 0.0f);
    EXPECT_EQ(settings.edgeGain, 1.0f);
    EXPECT_EQ(settings.edgeFloor, 0.005f);
    EXPECT_EQ(settings.detailGain, 0.0f);
    EXPECT_EQ(settings.detailGamma, 0.0f);
    EXPECT_EQ(settings.noise, VELORN_AUTOMATIC);
    EXPECT_EQ(settings.light, VELORN_LIGHT_AUTOMATIC);
    EXPECT_EQ(settings.quality, VELORN_QUALITY_NORMAL);
    EXPECT_EQ(settings.continueFrame, 1);
    EXPECT_EQ(settings.recoverClipped, 1);
    EXPECT_EQ(settings.region.x, 0);
    EXPECT_EQ(settings.region.y, 0);
    EXPECT_EQ(settings.region.width, 0);
    EXPECT_EQ(settings.region.height, 0);
    EXPECT_EQ(settings.threads, 0);
    EXPECT_EQ(settings.progress, nullptr);
    EXPECT_EQ(settings.userData, nullptr);
    EXPECT_EQ(settings.profile, nullptr);
    EXPECT_EQ(settings.profileSize, 0u);
}

TEST(FindDefaults, AreTheDocumentedValues) {
    VelornFindSettings settings;
    std::memset(&settings, 0x5A, sizeof settings);
    settings.size = sizeof settings;
    ASSERT_EQ(velornFindDefaults(&settings), VELORN_STATUS_OK);
    EXPECT_EQ(settings.size, sizeof settings);
    EXPECT_EQ(settings.maxWidth, 0);
    EXPECT_EQ(settings.maxHeight, 0);
    EXPECT_EQ(settings.partSide, 0);
    EXPECT_EQ(settings.threads, 0);
    EXPECT_EQ(settings.progress, nullptr);
    EXPECT_EQ(settings.userData, nullptr);
    EXPECT_EQ(settings.region.width, 0);
    EXPECT_EQ(settings.start, nullptr);
}

TEST(FindDefaults, OfTheFirstVersionEndBeforeTheRegion) {
    VelornFindSettings settings;
    std::memset(&settings, 0x5A, sizeof settings);
    settings.size = offsetof(VelornFindSettings, region);
    ASSERT_EQ(velornFindDefaults(&settings), VELORN_STATUS_OK);
    EXPECT_EQ(settings.size, offsetof(VelornFindSettings, region));
    EXPECT_EQ(settings.userData, nullptr);
    EXPECT_EQ(settings.region.x, 0x5A5A5A5A);
}

TEST(Defaults, NullRecordsFail) {
    EXPECT_VELORN_INVALID(velornRestoreDefaults(nullptr), "settings is null");
    EXPECT_VELORN_INVALID(velornFindDefaults(nullptr), "settings is null");
}

TEST(Defaults, UnknownSizesFailAndLeaveTheRecordUnchanged) {
    for (const std::uint32_t size :
         {0u, 4u, static_cast<std::uint32_t>(sizeof(VelornFindSettings)) - 4,
          static_cast<std::uint32_t>(sizeof(VelornFindSettings)) + 8, 0xFFFFFFFFu}) {
        VelornFindSettings settings{};
        settings.size = size;
        settings.maxWidth = 77;
        const std::string message = "settings->size is " + std::to_string(size) + ", but must be " +
                                    std::to_string(sizeof settings) + ", the size of the record";
        EXPECT_VELORN_INVALID(velornFindDefaults(&settings), message.c_str());
        EXPECT_EQ(settings.maxWidth, 77);
    }
    VelornRestoreSettings settings{};
    EXPECT_EQ(velornRestoreDefaults(&settings), VELORN_STATUS_INVALID_ARGUMENT);
}

} // namespace
} // namespace velorntest
