#pragma once

#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/options/Presets.h"

#include <array>
#include <string>
#include <vector>

namespace velorn {

/// The options of `velorn deblur` that control the restoration: one for each setting, two that
/// combine several settings, and the presets.
///
/// An option for a setting overrides the preset, and the preset overrides the default. A setting
/// that is given twice, by its own option and by a combined one, is refused.
class SettingOptions {
public:
    SettingOptions() = default;
    SettingOptions(const SettingOptions&) = delete;
    SettingOptions& operator=(const SettingOptions&) = delete;

    /// Adds the options to `parser`, which keeps references to this object.
    void addTo(ArgumentParser& parser);

    /// Changes `settings` as the command line says.
    /// @throws UsageFailure that names what is out of range or given twice.
    void applyTo(VelornRestoreSettings& settings) const;

    /// `words` with default values after every combined option that no values follow.
    static std::vector<std::string> completed(std::vector<std::string> words);

private:
    static constexpr std::size_t kSettingCount = 11;
    static constexpr std::size_t kCombinationCount = 2;

    void addPresets(ArgumentParser& parser);
    void addSettings(ArgumentParser& parser);
    void addCombinations(ArgumentParser& parser);
    void applyPreset(VelornRestoreSettings& settings) const;
    void applyNamed(VelornRestoreSettings& settings) const;
    void applyCombined(VelornRestoreSettings& settings) const;

    Argument m_presetOption;
    std::string m_preset;
    std::array<Argument, kSettingCount> m_options{};
    std::array<float, kSettingCount> m_values{};
    std::array<Argument, kCombinationCount> m_combinations{};
    std::array<std::string, kCombinationCount> m_combinationTexts;
};

} // namespace velorn
