#pragma once

#include "hosts/command/commands/Presets.h"

#include <array>
#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace velorn {

/// The options of `velorn deblur` that say how the picture is restored: one for each setting, two
/// that give several settings at once, and the presets.
///
/// What is given by name or at once comes first, then what the preset says, then the standard. A
/// setting that is given twice, by its own option and by one for several, is refused.
class SettingOptions {
public:
    SettingOptions() = default;
    SettingOptions(const SettingOptions&) = delete;
    SettingOptions& operator=(const SettingOptions&) = delete;

    /// Adds the options to `command`, which keeps references to this object.
    void addTo(CLI::App& command);

    /// The settings as the command line gives them.
    /// @throws UsageFailure with what is out of range or given twice
    RestorationSettings result() const;

    /// Whether the strength was given; otherwise it is to be measured.
    bool lambdaIsGiven() const;

    /// The words of the command line, the options for several settings completed by values that
    /// look right where none follow them.
    static std::vector<std::string> completed(std::vector<std::string> words);

private:
    static constexpr std::size_t kSettingCount = 9;
    static constexpr std::size_t kCombinationCount = 2;

    RestorationSettings presetSettings() const;
    void applyNamed(RestorationSettings& settings) const;
    void applyCombined(RestorationSettings& settings) const;

    CLI::Option* m_presetOption = nullptr;
    std::string m_preset;
    std::array<CLI::Option*, kSettingCount> m_options{};
    std::array<float, kSettingCount> m_values{};
    std::array<CLI::Option*, kCombinationCount> m_combinations{};
    std::array<std::string, kCombinationCount> m_combinationTexts;
};

} // namespace velorn
