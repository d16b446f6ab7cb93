#include "hosts/command/commands/SettingOptions.h"

#include "hosts/command/terminal/Failure.h"
#include "hosts/command/terminal/Numbers.h"

#include <algorithm>
#include <span>

namespace velorn {
namespace {

using Member = float RestorationSettings::*;

/// One setting of the restoration: its option, what it is allowed to be and what it does.
struct Setting {
    const char* option;
    Member member;
    float lowest;
    float highest;
    const char* effect;
};

constexpr std::array<Setting, 9> kSettings{{
    {"--lambda", &RestorationSettings::lambda, 1.0f, 1e6f,
     "Strength: how hard the result follows the blur kernel. Higher values bring out more\n"
     "detail, and more noise with it; about 500 for noisy and 50000 for clean pictures.\n"
     "Without it, the strength is chosen from the noise measured in the picture."},
    {"--alpha", &RestorationSettings::alpha, 0.0f, 1.0f,
     "How natural pictures are thought to be: low values favour few and sharp edges on smooth\n"
     "areas, high values spare soft transitions and fine texture."},
    {"--limit", &RestorationSettings::limit, 0.0f, 1.0f,
     "Holds back bright and dark fringes along edges: 1 allows no more contrast than the\n"
     "neighbourhood shows, 0 lets all of it through. Below 0.1 it is off."},
    {"--edge-radius", &RestorationSettings::edgeRadius, 0.1f, 10.0f,
     "Width in pixels of the details that edge sharpening lifts. 0.4 and below turn it off."},
    {"--edge-slope", &RestorationSettings::edgeSlope, 0.0f, 10.0f,
     "Extra sharpening next to edges. Edge sharpening runs when this or --edge-gain is above\n"
     "1.01."},
    {"--edge-gain", &RestorationSettings::edgeGain, 0.0f, 10.0f,
     "Sharpening of the whole picture: 1 leaves details as they are, 2 doubles them."},
    {"--edge-floor", &RestorationSettings::edgeFloor, 0.00001f, 1.0f,
     "Keeps --edge-slope away from calm areas: higher values leave more of them alone."},
    {"--detail-gain", &RestorationSettings::detailGain, -1.0f, 3.0f,
     "Contrast of texture, without a change at strong edges: 0.1 makes it 1.3 times as strong,\n"
     "1 four times, -0.5 half as strong. Detail enhancement runs when this or --detail-gamma\n"
     "is above 0.01; values below 0 alone leave the picture as it is."},
    {"--detail-gamma", &RestorationSettings::detailGamma, -1.0f, 3.0f,
     "Above 0, lifts the faintest texture most, and the noise with it, and holds strong texture\n"
     "back; below 0, the reverse."},
}};

struct Part {
    const char* name;
    Member member;
};

/// Several settings in one option.
struct Combination {
    const char* option;
    /// The values that look right, for the option without any.
    const char* standard;
    std::span<const Part> parts;
    /// So many of the parts have to be given.
    std::size_t least;
    const char* effect;

    std::string syntax() const {
        std::string text;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            text += (i < least ? "" : "[") + std::string(i == 0 ? "" : ",") + parts[i].name;
        }
        return text + std::string(parts.size() - least, ']');
    }
};

constexpr std::array<Part, 4> kSharpenParts{{{"SLOPE", &RestorationSettings::edgeSlope},
                                             {"GAIN", &RestorationSettings::edgeGain},
                                             {"RADIUS", &RestorationSettings::edgeRadius},
                                             {"FLOOR", &RestorationSettings::edgeFloor}}};
constexpr std::array<Part, 2> kDetailParts{
    {{"GAIN", &RestorationSettings::detailGain}, {"GAMMA", &RestorationSettings::detailGamma}}};

constexpr std::array<Combination, 2> kCombinations{{
    {"--sharpen", "0.3,1.2", kSharpenParts, 2,
     "Sharpens edges: stands in place of --edge-slope, --edge-gain, --edge-radius and\n"
     "--edge-floor, as far as it has numbers."},
    {"--detail", "0.15", kDetailParts, 1,
     "Enhances texture: stands in place of --detail-gain and --detail-gamma, as far as it has\n"
     "numbers."},
}};

std::size_t indexOf(Member member) {
    return static_cast<std::size_t>(std::ranges::distance(
        kSettings.begin(), std::ranges::find(kSettings, member, &Setting::member)));
}

void checkRange(const std::string& name, const Setting& setting, float value) {
    if (!(value >= setting.lowest && value <= setting.highest)) {
        throw UsageFailure(name + " must be from " + numberText(setting.lowest) + " to " +
                           numberText(setting.highest));
    }
}

/// The numbers of one option for several settings, as many as were given.
std::vector<float> partsOf(const Combination& combination, const std::string& text) {
    const std::vector<float> numbers = numberList(text);
    if (numbers.size() < combination.least || numbers.size() > combination.parts.size()) {
        throw UsageFailure(std::string(combination.option) +
                           " takes numbers: " + combination.syntax());
    }
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const Part& part = combination.parts[i];
        checkRange(std::string(combination.option) + ": " + part.name,
                   kSettings[indexOf(part.member)], numbers[i]);
    }
    return numbers;
}

std::string presetNames() {
    std::string names;
    const auto all = presets();
    for (std::size_t i = 0; i < all.size(); ++i) {
        names += (i == 0 ? "" : i + 1 == all.size() ? " or " : ", ") + std::string(all[i].name);
    }
    return names;
}

/// The options that stand for `settings`, where they differ from the standard.
std::string optionsText(const RestorationSettings& settings) {
    std::string text;
    for (const Setting& setting : kSettings) {
        const float value = settings.*setting.member;
        if (value != RestorationSettings{}.*setting.member) {
            text +=
                (text.empty() ? "" : " ") + std::string(setting.option) + " " + numberText(value);
        }
    }
    return text;
}

std::string presetText() {
    std::string text = presetNames() +
                       "\n"
                       "Settings that go together. Options given besides replace what the preset "
                       "says.\n";
    for (const Preset& preset : presets()) {
        const std::string name = preset.name;
        text += name + std::string(8 - name.size(), ' ');
        for (const char c : std::string(preset.effect)) {
            text += c == '\n' ? "\n" + std::string(8, ' ') : std::string(1, c);
        }
        text += "\n" + std::string(8, ' ') + "= " + optionsText(preset.settings) + "\n";
    }
    return text;
}

std::string rangeText(const Setting& setting) {
    const bool isMeasured = setting.member == &RestorationSettings::lambda;
    return numberText(setting.lowest) + ".." + numberText(setting.highest) + ", default: " +
           (isMeasured ? "measured" : numberText(RestorationSettings{}.*setting.member)) + "\n";
}

constexpr const char* kGroup = "Settings";

} // namespace

void SettingOptions::addTo(CLI::App& command) {
    static_assert(kSettings.size() == kSettingCount && kCombinations.size() == kCombinationCount);
    m_presetOption =
        command.add_option("--preset", m_preset, presetText())->type_name("NAME")->group(kGroup);
    for (std::size_t i = 0; i < kSettings.size(); ++i) {
        m_options[i] = command
                           .add_option(kSettings[i].option, m_values[i],
                                       rangeText(kSettings[i]) + kSettings[i].effect)
                           ->type_name("NUMBER")
                           ->group(kGroup);
    }
    for (std::size_t i = 0; i < kCombinations.size(); ++i) {
        const Combination& combination = kCombinations[i];
        const std::string text = std::string(combination.effect) + "\nWithout any, they are " +
                                 combination.standard + ".";
        m_combinations[i] = command.add_option(combination.option, m_combinationTexts[i], text)
                                ->type_name("[" + combination.syntax() + "]")
                                ->group(kGroup);
    }
}

RestorationSettings SettingOptions::presetSettings() const {
    if (m_presetOption->count() == 0) {
        return {};
    }
    const auto all = presets();
    const auto found = std::ranges::find(all, m_preset, &Preset::name);
    if (found == all.end()) {
        throw UsageFailure("--preset must be " + presetNames());
    }
    return found->settings;
}

void SettingOptions::applyNamed(RestorationSettings& settings) const {
    for (std::size_t i = 0; i < kSettings.size(); ++i) {
        if (m_options[i]->count() > 0) {
            checkRange(kSettings[i].option, kSettings[i], m_values[i]);
            settings.*kSettings[i].member = m_values[i];
        }
    }
}

void SettingOptions::applyCombined(RestorationSettings& settings) const {
    for (std::size_t i = 0; i < kCombinations.size(); ++i) {
        if (m_combinations[i]->count() == 0) {
            continue;
        }
        const Combination& combination = kCombinations[i];
        const std::vector<float> numbers = partsOf(combination, m_combinationTexts[i]);
        for (std::size_t k = 0; k < numbers.size(); ++k) {
            const Member member = combination.parts[k].member;
            const std::size_t named = indexOf(member);
            if (m_options[named]->count() > 0) {
                throw UsageFailure(std::string(combination.option) + " and " +
                                   kSettings[named].option +
                                   " give the same setting; give only one of them");
            }
            settings.*member = numbers[k];
        }
    }
}

RestorationSettings SettingOptions::result() const {
    RestorationSettings settings = presetSettings();
    applyNamed(settings);
    applyCombined(settings);
    return settings;
}

bool SettingOptions::lambdaIsGiven() const {
    static_assert(kSettings[0].member == &RestorationSettings::lambda);
    return m_options[0]->count() > 0;
}

std::vector<std::string> SettingOptions::completed(std::vector<std::string> words) {
    for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
        const auto combination = std::ranges::find(kCombinations, words[i], &Combination::option);
        const bool isFollowed = i + 1 < words.size() && !numberList(words[i + 1]).empty();
        if (combination != kCombinations.end() && !isFollowed) {
            words[i] += std::string("=") + combination->standard;
        }
    }
    return words;
}

} // namespace velorn
