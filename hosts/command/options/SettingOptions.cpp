#include "hosts/command/options/SettingOptions.h"

#include "hosts/command/arguments/alternatives.h"
#include "hosts/command/arguments/NumberRange.h"
#include "hosts/command/arguments/Numbers.h"
#include "hosts/command/terminal/Failure.h"
#include "velorn.hpp"

#include <algorithm>
#include <span>

namespace velorn {
namespace {

using Member = float VelornRestoreSettings::*;

/// One setting of the restoration: its option, its range and its effect.
struct Setting {
    const char* option;
    Member member;
    const char* unit;
    NumberRange range;
    const char* effect;
};

constexpr std::array<Setting, 11> kSettings{{
    {"--lambda",
     &VelornRestoreSettings::strength,
     "",
     {1.0f, 1e6f},
     "Strength of the deconvolution. Higher values restore more detail and amplify noise: about "
     "500 suits noisy pictures, 50000 clean ones. By default it is chosen for the picture."},
    {"--chroma-lambda",
     &VelornRestoreSettings::chromaStrength,
     "",
     {0.001f, 1e6f},
     "The same for colour differences. By default it is chosen for the picture."},
    {"--alpha",
     &VelornRestoreSettings::alpha,
     "",
     {0.0f, 1.0f},
     "Exponent of the gradient prior. Low values favour few, sharp edges on smooth areas; high "
     "values preserve soft transitions and fine texture."},
    {"--limit",
     &VelornRestoreSettings::limit,
     "",
     {0.0f, 1.0f},
     "Limits bright and dark fringes along edges: 1 allows no more contrast than the "
     "neighbourhood shows, 0 allows any. Values below 0.1 turn the limiter off."},
    {"--noise",
     &VelornRestoreSettings::noise,
     "levels of 255, ",
     {0.0f, 100.0f},
     "Standard deviation of the noise in the brightness, on which the automatic strength rests. By "
     "default it is measured in the picture."},
    {"--edge-radius",
     &VelornRestoreSettings::edgeRadius,
     "pixels, ",
     {0.1f, 10.0f},
     "Size of the details that edge sharpening amplifies. Values below 0.4 turn edge sharpening "
     "off."},
    {"--edge-slope",
     &VelornRestoreSettings::edgeSlope,
     "",
     {0.0f, 10.0f},
     "Additional sharpening near edges. Edge sharpening runs if --edge-slope is above 0 or "
     "--edge-gain above 1.01."},
    {"--edge-gain",
     &VelornRestoreSettings::edgeGain,
     "",
     {0.0f, 10.0f},
     "Sharpening of the whole picture: 1 leaves details unchanged, 2 doubles them."},
    {"--edge-floor",
     &VelornRestoreSettings::edgeFloor,
     "",
     {0.00001f, 1.0f},
     "Keeps --edge-slope away from smooth areas: higher values spare more of them."},
    {"--detail-gain",
     &VelornRestoreSettings::detailGain,
     "",
     {-1.0f, 3.0f},
     "Contrast of texture; strong edges stay unchanged. 0.1 multiplies texture by 1.3, 1 by 4, "
     "-0.5 by 0.5. Detail enhancement runs only if --detail-gain or --detail-gamma is above 0.01."},
    {"--detail-gamma",
     &VelornRestoreSettings::detailGamma,
     "",
     {-1.0f, 3.0f},
     "Above 0, amplifies faint texture, noise included, and attenuates strong texture; below 0, "
     "the reverse."},
}};

struct Part {
    const char* name;
    Member member;
};

/// An option for several settings.
struct Combination {
    const char* option;
    /// The values of the option without any.
    const char* defaults;
    std::span<const Part> parts;
    /// The number of parts that cannot be omitted.
    std::size_t least;
    const char* effect;

    /// The syntax of the value, such as "A,B[,C[,D]]".
    std::string syntax() const {
        std::string text;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            text.append(i < least ? "" : "[").append(i == 0 ? "" : ",").append(parts[i].name);
        }
        return text + std::string(parts.size() - least, ']');
    }
};

constexpr std::array<Part, 4> kSharpenParts{{{"SLOPE", &VelornRestoreSettings::edgeSlope},
                                             {"GAIN", &VelornRestoreSettings::edgeGain},
                                             {"RADIUS", &VelornRestoreSettings::edgeRadius},
                                             {"FLOOR", &VelornRestoreSettings::edgeFloor}}};
constexpr std::array<Part, 2> kDetailParts{
    {{"GAIN", &VelornRestoreSettings::detailGain}, {"GAMMA", &VelornRestoreSettings::detailGamma}}};

constexpr std::array<Combination, 2> kCombinations{{
    {"--sharpen", "0.3,1.2", kSharpenParts, 2,
     "Sharpens edges: sets --edge-slope, --edge-gain, --edge-radius and --edge-floor, in this "
     "order."},
    {"--detail", "0.15", kDetailParts, 1,
     "Enhances texture: sets --detail-gain and --detail-gamma, in this order."},
}};

std::size_t indexOf(Member member) {
    return static_cast<std::size_t>(std::ranges::distance(
        kSettings.begin(), std::ranges::find(kSettings, member, &Setting::member)));
}

/// The numbers of a combined option, as many as are given.
std::vector<float> partsOf(const Combination& combination, const std::string& text) {
    const std::vector<float> numbers = numberList(text);
    if (numbers.size() < combination.least || numbers.size() > combination.parts.size()) {
        throw UsageFailure(std::string(combination.option) +
                           " must be numbers: " + combination.syntax());
    }
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const Part& part = combination.parts[i];
        kSettings[indexOf(part.member)].range.check(
            std::string(combination.option) + ": " + part.name, numbers[i]);
    }
    return numbers;
}

std::vector<std::string> presetNames() {
    std::vector<std::string> names;
    for (const Preset& preset : presets()) {
        names.emplace_back(preset.name);
    }
    return names;
}

/// The options that equal `preset`.
std::string optionsText(const Preset& preset) {
    std::string text;
    for (const SettingValue& item : preset.values) {
        text.append(text.empty() ? "" : " ").append(kSettings[indexOf(item.setting)].option);
        text.append(" ").append(numberText(item.value));
    }
    return text;
}

std::string presetText() {
    std::string text =
        alternatives(presetNames()) +
        "\nSettings for a purpose. Options for single settings override the preset.\n";
    for (const Preset& preset : presets()) {
        text.append(preset.name).append("\n    ").append(preset.effect);
        text.append("\n    Equals ").append(optionsText(preset)).append(".\n");
    }
    return text;
}

std::string rangeText(const Setting& setting) {
    const float value = api::restoreSettings().*setting.member;
    return std::string(setting.unit) + setting.range.text() +
           ", default: " + (value == VELORN_AUTOMATIC ? "automatic" : numberText(value)) + "\n";
}

constexpr const char* kGroup = "Settings";

} // namespace

void SettingOptions::addTo(ArgumentParser& parser) {
    addPresets(parser);
    addSettings(parser);
    addCombinations(parser);
}

void SettingOptions::addPresets(ArgumentParser& parser) {
    m_presetOption = parser.add("--preset", m_preset, presetText())
                         .valueName("NAME")
                         .group(kGroup)
                         .choices(presetNames());
}

void SettingOptions::addSettings(ArgumentParser& parser) {
    static_assert(kSettings.size() == kSettingCount);
    for (std::size_t i = 0; i < kSettings.size(); ++i) {
        m_options[i] = parser
                           .add(kSettings[i].option, m_values[i],
                                rangeText(kSettings[i]) + kSettings[i].effect)
                           .valueName("NUMBER")
                           .group(kGroup);
    }
}

void SettingOptions::addCombinations(ArgumentParser& parser) {
    static_assert(kCombinations.size() == kCombinationCount);
    for (std::size_t i = 0; i < kCombinations.size(); ++i) {
        const Combination& combination = kCombinations[i];
        const std::string text =
            std::string("without numbers: ") + combination.defaults + "\n" + combination.effect;
        m_combinations[i] =
            parser.add(combination.option, m_combinationTexts[i], text)
                .valueName(std::string("[").append(combination.syntax()).append("]"))
                .group(kGroup);
    }
}

void SettingOptions::applyPreset(VelornRestoreSettings& settings) const {
    if (m_presetOption.isGiven()) {
        std::ranges::find(presets(), m_preset, &Preset::name)->applyTo(settings);
    }
}

void SettingOptions::applyNamed(VelornRestoreSettings& settings) const {
    for (std::size_t i = 0; i < kSettings.size(); ++i) {
        if (m_options[i].isGiven()) {
            kSettings[i].range.check(kSettings[i].option, m_values[i]);
            settings.*kSettings[i].member = m_values[i];
        }
    }
}

void SettingOptions::applyCombined(VelornRestoreSettings& settings) const {
    for (std::size_t i = 0; i < kCombinations.size(); ++i) {
        if (!m_combinations[i].isGiven()) {
            continue;
        }
        const Combination& combination = kCombinations[i];
        const std::vector<float> numbers = partsOf(combination, m_combinationTexts[i]);
        for (std::size_t k = 0; k < numbers.size(); ++k) {
            const Member member = combination.parts[k].member;
            const std::size_t named = indexOf(member);
            if (m_options[named].isGiven()) {
                throw UsageFailure(std::string(combination.option) + " and " +
                                   kSettings[named].option +
                                   " give the same setting; give only one of them");
            }
            settings.*member = numbers[k];
        }
    }
}

void SettingOptions::applyTo(VelornRestoreSettings& settings) const {
    applyPreset(settings);
    applyNamed(settings);
    applyCombined(settings);
}

std::vector<std::string> SettingOptions::completed(std::vector<std::string> words) {
    for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
        const auto combination = std::ranges::find(kCombinations, words[i], &Combination::option);
        const bool isFollowed = i + 1 < words.size() && !numberList(words[i + 1]).empty();
        if (combination != kCombinations.end() && !isFollowed) {
            words[i] += std::string("=") + combination->defaults;
        }
    }
    return words;
}

} // namespace velorn
