#pragma once

#include "hosts/command/restoration/Restoration.h"

#include <span>

namespace velorn {

/// Settings for a purpose.
struct Preset {
    const char* name;
    /// The purpose and the effect on the picture, for --help.
    const char* effect;
    /// The strength (`lambda`) is not part of a preset: it follows from the noise of the picture.
    RestorationSettings settings;
};

/// All presets. docs/presets.md describes how their values were found.
std::span<const Preset> presets();

} // namespace velorn
