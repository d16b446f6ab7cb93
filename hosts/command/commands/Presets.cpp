#include "hosts/command/commands/Presets.h"

#include <array>

namespace velorn {
namespace {

constexpr RestorationSettings lens() {
    RestorationSettings settings;
    settings.detailGain = 0.1f;
    return settings;
}

constexpr RestorationSettings motion() {
    RestorationSettings settings;
    settings.alpha = 0.3f;
    settings.limit = 0.8f;
    return settings;
}

constexpr RestorationSettings scan() {
    RestorationSettings settings;
    settings.alpha = 0.3f;
    settings.limit = 1.0f;
    settings.edgeSlope = 0.5f;
    settings.edgeGain = 1.1f;
    settings.edgeFloor = 0.02f;
    return settings;
}

constexpr RestorationSettings crisp() {
    RestorationSettings settings;
    settings.edgeSlope = 0.3f;
    settings.edgeGain = 1.2f;
    settings.detailGain = 0.15f;
    return settings;
}

constexpr std::array<Preset, 4> kPresets{{
    {"lens",
     "For pictures out of focus: a little more contrast in the texture that the blur took\n"
     "most of; edges as they come.",
     lens()},
    {"motion",
     "For camera shake and moving things, where the motion is never known exactly: calm\n"
     "areas and few edges, double edges and fringes held back, faint texture lost.",
     motion()},
    {"scan",
     "For scanned text and drawings: dark, clean strokes without fringes on calm paper.\n"
     "Makes photographs look drawn.",
     scan()},
    {"crisp",
     "For pictures to be looked at on a screen: crisper edges and livelier texture than\n"
     "the scene had. Brings noise out; not for pictures to be worked on further.",
     crisp()},
}};

} // namespace

std::span<const Preset> presets() {
    return kPresets;
}

} // namespace velorn
