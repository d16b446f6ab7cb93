#include "restoration/boundary/restoreSettings.h"

#include "restoration/boundary/argumentChecks.h"
#include "restoration/boundary/checkedRegion.h"
#include "restoration/boundary/records.h"

#include <limits>
#include <string>

namespace restoration {
namespace {

constexpr float kUnlimited = std::numeric_limits<float>::infinity();

struct FloatSetting {
    const char* name;
    float VelornRestoreSettings::*member;
    float standard; ///< the default
    FloatRange range;
};

constexpr FloatRange kAboveZero{0.0f, kUnlimited, true, true};
constexpr FloatRange kShare{0.0f, 1.0f, false, true};

constexpr FloatSetting kFloatSettings[] = {
    {"strength", &VelornRestoreSettings::strength, VELORN_AUTOMATIC, kAboveZero},
    {"chromaStrength", &VelornRestoreSettings::chromaStrength, VELORN_AUTOMATIC, kAboveZero},
    {"alpha", &VelornRestoreSettings::alpha, VELORN_AUTOMATIC, kShare},
    {"limit", &VelornRestoreSettings::limit, VELORN_AUTOMATIC, kShare},
    {"edgeRadius", &VelornRestoreSettings::edgeRadius, 0.85f, {0.1f, 10.0f}},
    {"edgeSlope", &VelornRestoreSettings::edgeSlope, 0.0f, {0.0f, 20.0f}},
    {"edgeGain", &VelornRestoreSettings::edgeGain, 1.0f, {0.0f, 20.0f}},
    {"edgeFloor", &VelornRestoreSettings::edgeFloor, 0.005f, {0.00001f, 1.0f}},
    {"detailGain", &VelornRestoreSettings::detailGain, 0.0f, {-1.0f, 3.0f}},
    {"detailGamma", &VelornRestoreSettings::detailGamma, 0.0f, {-1.0f, 3.0f}},
    {"noise", &VelornRestoreSettings::noise, VELORN_AUTOMATIC, {0.0f, kUnlimited, false, true}},
};

struct ChoiceSetting {
    const char* name;
    std::int32_t VelornRestoreSettings::*member;
    std::int32_t standard; ///< the default
    std::int32_t least;
    std::int32_t most;
};

constexpr std::int32_t kAnyLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kAnyMost = std::numeric_limits<std::int32_t>::max();

constexpr ChoiceSetting kChoiceSettings[] = {
    {"light", &VelornRestoreSettings::light, VELORN_LIGHT_AUTOMATIC, VELORN_LIGHT_AUTOMATIC,
     VELORN_LIGHT_DISPLAY},
    {"quality", &VelornRestoreSettings::quality, VELORN_QUALITY_NORMAL, VELORN_QUALITY_NORMAL,
     VELORN_QUALITY_FAST},
    {"continueFrame", &VelornRestoreSettings::continueFrame, 1, kAnyLeast, kAnyMost},
    {"recoverClipped", &VelornRestoreSettings::recoverClipped, 1, kAnyLeast, kAnyMost},
    {"threads", &VelornRestoreSettings::threads, 0, 0, kAnyMost},
};

std::string settingName(const char* name) {
    return std::string("settings->") + name;
}

} // namespace

VelornRestoreSettings restoreDefaults() noexcept {
    VelornRestoreSettings settings{};
    settings.size = sizeof settings;
    for (const FloatSetting& setting : kFloatSettings) {
        settings.*setting.member = setting.standard;
    }
    for (const ChoiceSetting& setting : kChoiceSettings) {
        settings.*setting.member = setting.standard;
    }
    return settings;
}

VelornRestoreSettings checkedSettings(const VelornRestoreSettings* settings,
                                      const VelornPicture& source) {
    VelornRestoreSettings checked = restoreDefaults();
    if (settings != nullptr) {
        requireRecord(settings, "settings");
        checked = readRecord(*settings, checked);
    }
    for (const FloatSetting& setting : kFloatSettings) {
        requireRange(checked.*setting.member, setting.range, settingName(setting.name));
    }
    for (const ChoiceSetting& setting : kChoiceSettings) {
        requireRange(checked.*setting.member, setting.least, setting.most,
                     settingName(setting.name));
    }
    checked.region = checkedRegion(checked.region, source);
    if ((checked.profile == nullptr) != (checked.profileSize == 0)) {
        refuse("settings->profile and settings->profileSize contradict each other");
    }
    return checked;
}

} // namespace restoration
