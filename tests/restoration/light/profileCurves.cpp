#include "restoration/light/profileCurves.h"

#include "restoration/failures/Failure.h"

#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <lcms2.h>
#include <string>
#include <vector>

namespace restoration {
namespace {

std::vector<std::byte> saved(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::vector<std::byte> bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

std::vector<std::byte> matrixProfile(double redGamma, double greenGamma, double blueGamma) {
    const cmsCIExyY white{0.3127, 0.3290, 1.0};
    const cmsCIExyYTRIPLE primaries{{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
    std::array<cmsToneCurve*, 3> curves{cmsBuildGamma(nullptr, redGamma),
                                        cmsBuildGamma(nullptr, greenGamma),
                                        cmsBuildGamma(nullptr, blueGamma)};
    cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves.data());
    cmsFreeToneCurveTriple(curves.data());
    return saved(profile);
}

std::string refusal(const std::vector<std::byte>& profile) {
    try {
        profileCurves(profile);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status(), VELORN_STATUS_INVALID_ARGUMENT);
        return failure.what();
    }
    return "";
}

TEST(ProfileCurves, TheProfileOfSRgbHasTheCurveOfSRgb) {
    const ToneCurves curves = profileCurves(saved(cmsCreate_sRGBProfile()));
    const ToneCurve standard = ToneCurve::sRgb();
    for (int level = 0; level <= 255; ++level) {
        const float value = static_cast<float>(level) / 255.0f;
        for (const std::size_t channel : {0u, 1u, 2u}) {
            EXPECT_NEAR(curves.of(channel).light(value), standard.light(value), 3e-5f);
        }
    }
}

TEST(ProfileCurves, ChannelsHaveTheirOwnCurves) {
    const ToneCurves curves = profileCurves(matrixProfile(1.0, 2.0, 3.0));
    EXPECT_NEAR(curves.of(0).light(0.5f), 0.5f, 1e-3f);
    EXPECT_NEAR(curves.of(1).light(0.5f), 0.25f, 2e-3f);
    EXPECT_NEAR(curves.of(2).light(0.5f), 0.125f, 6e-3f);
    EXPECT_EQ(curves.of(3).light(0.5f), curves.of(2).light(0.5f));
}

TEST(ProfileCurves, AGreyProfileHasOneCurve) {
    const cmsCIExyY white{0.3127, 0.3290, 1.0};
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.0);
    const std::vector<std::byte> profile = saved(cmsCreateGrayProfile(&white, curve));
    cmsFreeToneCurve(curve);
    const ToneCurves curves = profileCurves(profile);
    EXPECT_NEAR(curves.of(0).light(0.5f), 0.25f, 2e-3f);
    EXPECT_EQ(curves.of(2).light(0.5f), curves.of(0).light(0.5f));
}

TEST(ProfileCurves, UnusableProfilesAreRefused) {
    EXPECT_NE(refusal({}).find("not an ICC profile"), std::string::npos);
    EXPECT_NE(refusal(std::vector<std::byte>(300)).find("not an ICC profile"), std::string::npos);
    const std::vector<std::byte> lab = saved(cmsCreateLab4Profile(nullptr));
    EXPECT_NE(refusal(lab).find("neither for grey"), std::string::npos);

    cmsHPROFILE tableless = cmsCreate_sRGBProfile();
    cmsWriteTag(tableless, cmsSigGreenTRCTag, nullptr);
    EXPECT_NE(refusal(saved(tableless)).find("no tone curves"), std::string::npos);
}

TEST(ProfileCurves, DamagedProfilesDoNoHarm) {
    const std::vector<std::byte> whole = matrixProfile(2.2, 2.2, 2.2);
    for (std::size_t length = 0; length < whole.size() / 2; length += 7) {
        const std::vector<std::byte> part(whole.begin(),
                                          whole.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_NE(refusal(part), "");
    }
    // A changed byte may leave a usable profile; no outcome but the refusal is a failure.
    for (std::size_t at = 0; at < whole.size(); at += 3) {
        std::vector<std::byte> damaged = whole;
        damaged[at] ^= std::byte{0xff};
        refusal(damaged);
    }
}

} // namespace
} // namespace restoration
