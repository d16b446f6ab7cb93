#include "restoration/boundary/restoreSettings.h"

#include "tests/restoration/boundary/failureOf.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

namespace restoration {
namespace {

using test::failureOf;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

VelornPicture source() {
    VelornPicture picture{};
    picture.width = 100;
    picture.height = 80;
    return picture;
}

std::string failure(const VelornRestoreSettings& settings) {
    VelornStatus status = VELORN_STATUS_INVALID_ARGUMENT;
    const std::string message = failureOf([&] { checkedSettings(&settings, source()); }, &status);
    EXPECT_EQ(status, VELORN_STATUS_INVALID_ARGUMENT);
    return message;
}

template <class Value>
std::string failureWith(Value VelornRestoreSettings::*member, Value value) {
    VelornRestoreSettings settings = restoreDefaults();
    settings.*member = value;
    return failure(settings);
}

TEST(RestoreSettings, NullGivesTheDefaultsAndTheWholeSource) {
    const VelornRestoreSettings settings = checkedSettings(nullptr, source());
    EXPECT_EQ(settings.strength, VELORN_AUTOMATIC);
    EXPECT_EQ(settings.region.x, 0);
    EXPECT_EQ(settings.region.y, 0);
    EXPECT_EQ(settings.region.width, 100);
    EXPECT_EQ(settings.region.height, 80);
}

TEST(RestoreSettings, DefaultsPass) {
    EXPECT_EQ(failure(restoreDefaults()), "");
}

struct FloatLimits {
    const char* name;
    float VelornRestoreSettings::*member;
    std::vector<float> legal;
    std::vector<float> illegal;
    const char* limits;
};

TEST(RestoreSettings, FloatsHaveTheirLimits) {
    using S = VelornRestoreSettings;
    const FloatLimits all[] = {
        {"strength", &S::strength, {1e-3f, 1e9f, -1}, {0, -2}, "above 0, or VELORN_AUTOMATIC"},
        {"chromaStrength", &S::chromaStrength, {1, -1}, {0, -5}, "above 0, or VELORN_AUTOMATIC"},
        {"alpha", &S::alpha, {0, 1, -1}, {1.01f, -.5f}, "0..1, or VELORN_AUTOMATIC"},
        {"limit", &S::limit, {0, 1, -1}, {1.01f, -.5f}, "0..1, or VELORN_AUTOMATIC"},
        {"edgeRadius", &S::edgeRadius, {.1f, 10}, {.09f, 10.1f, -1}, "0.1..10"},
        {"edgeSlope", &S::edgeSlope, {0, 20}, {-1, 20.1f}, "0..20"},
        {"edgeGain", &S::edgeGain, {0, 20}, {-1, 20.1f}, "0..20"},
        {"edgeFloor", &S::edgeFloor, {1e-5f, 1}, {0, 9e-6f, 1.1f, -1}, "1e-05..1"},
        {"detailGain", &S::detailGain, {-1, 3}, {-1.1f, 3.1f}, "-1..3"},
        {"detailGamma", &S::detailGamma, {-1, 3}, {-1.1f, 3.1f}, "-1..3"},
        {"noise", &S::noise, {0, 100, -1}, {-.5f}, "at least 0, or VELORN_AUTOMATIC"},
    };
    for (const FloatLimits& setting : all) {
        SCOPED_TRACE(setting.name);
        for (const float value : setting.legal) {
            EXPECT_EQ(failureWith(setting.member, value), "") << value;
        }
        for (const float value : {NAN, kInfinity, -kInfinity}) {
            EXPECT_NE(failureWith(setting.member, value), "") << value;
        }
        for (const float value : setting.illegal) {
            const std::string message = failureWith(setting.member, value);
            EXPECT_TRUE(message.starts_with("settings->" + std::string(setting.name) + " is "))
                << message;
            EXPECT_TRUE(message.ends_with(", but must be " + std::string(setting.limits)))
                << message;
        }
    }
}

TEST(RestoreSettings, ChoicesHaveTheirLimits) {
    using S = VelornRestoreSettings;
    EXPECT_EQ(failureWith(&S::light, 2), "");
    EXPECT_EQ(failureWith(&S::light, 3), "settings->light is 3, but must be 0..2");
    EXPECT_EQ(failureWith(&S::light, -1), "settings->light is -1, but must be 0..2");
    EXPECT_EQ(failureWith(&S::quality, 2), "");
    EXPECT_EQ(failureWith(&S::quality, 3), "settings->quality is 3, but must be 0..2");
    EXPECT_EQ(failureWith(&S::threads, 1000), "");
    EXPECT_EQ(failureWith(&S::threads, -1), "settings->threads is -1, but must be at least 0");
    EXPECT_EQ(failureWith(&S::continueFrame, -7), "");
    EXPECT_EQ(failureWith(&S::recoverClipped, 100), "");
}

TEST(RestoreSettings, RegionsLieWithinTheSource) {
    const auto failureOfRegion = [](const VelornRegion& region) {
        return failureWith(&VelornRestoreSettings::region, region);
    };
    EXPECT_EQ(failureOfRegion({0, 0, 100, 80}), "");
    EXPECT_EQ(failureOfRegion({99, 79, 1, 1}), "");
    EXPECT_EQ(failureOfRegion({-5, 700, 0, -9}), ""); // a width of 0: no region
    EXPECT_EQ(failureOfRegion({100, 0, 1, 1}), "settings->region.x is 100, but must be 0..99");
    EXPECT_EQ(failureOfRegion({0, -1, 1, 1}), "settings->region.y is -1, but must be 0..79");
    EXPECT_EQ(failureOfRegion({1, 0, 100, 1}), "settings->region.width is 100, but must be 1..99");
    EXPECT_EQ(failureOfRegion({0, 0, -1, 1}), "settings->region.width is -1, but must be 1..100");
    EXPECT_EQ(failureOfRegion({0, 70, 1, 11}), "settings->region.height is 11, but must be 1..10");
    EXPECT_EQ(failureOfRegion({0, 0, 2147483647, 1}),
              "settings->region.width is 2147483647, but must be 1..100");
}

TEST(RestoreSettings, ProfilesHaveASize) {
    const char profile[4] = {};
    VelornRestoreSettings settings = restoreDefaults();
    settings.profile = profile;
    const std::string message = "settings->profile and settings->profileSize contradict each other";
    EXPECT_EQ(failure(settings), message);
    settings.profileSize = 4;
    EXPECT_EQ(failure(settings), "");
    settings.profile = nullptr;
    EXPECT_EQ(failure(settings), message);
}

TEST(RestoreSettings, UnknownSizesFail) {
    VelornRestoreSettings settings = restoreDefaults();
    settings.size += 4;
    EXPECT_NE(failure(settings), "");
}

} // namespace
} // namespace restoration
