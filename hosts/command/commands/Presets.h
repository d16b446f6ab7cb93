#pragma once

#include "hosts/command/restoration/Restoration.h"

#include <span>

namespace velorn {

/// Settings that go together, under a name.
struct Preset {
    const char* name;
    /// What it is for and what it does to the picture; lines are broken for --help.
    const char* effect;
    /// The strength (`lambda`) is not among them: the picture's noise decides it.
    RestorationSettings settings;
};

/// All presets; docs/presets.md tells how their values were found.
std::span<const Preset> presets();

} // namespace velorn
