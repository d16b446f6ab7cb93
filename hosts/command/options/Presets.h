#pragma once

#include "velorn.h"

#include <span>

namespace velorn {

/// A setting of the library and a value for it.
struct SettingValue {
    float VelornRestoreSettings::*setting;
    float value;
};

/// Settings for a purpose.
struct Preset {
    const char* name;
    /// The purpose and the effect on the picture, for --help.
    const char* effect;
    /// All other settings keep their defaults. The strength is not part of a preset: the library
    /// chooses it for each picture.
    std::span<const SettingValue> values;

    void applyTo(VelornRestoreSettings& settings) const {
        for (const SettingValue& item : values) {
            settings.*item.setting = item.value;
        }
    }
};

/// All presets. docs/presets.md describes how their values were found.
std::span<const Preset> presets();

} // namespace velorn
