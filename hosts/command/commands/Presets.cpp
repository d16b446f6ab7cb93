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
     "Pictures out of focus: slightly more contrast in texture, which this blur weakens most. "
     "Edges stay as restored.",
     lens()},
    {"motion",
     "Camera shake and moving objects, where the motion is known only roughly: smooth areas "
     "with few edges, fewer double edges and fewer fringes. Faint texture is lost.",
     motion()},
    {"scan",
     "Scanned text and drawings: dark, clean strokes without fringes on a smooth background. "
     "Makes photographs look drawn.",
     scan()},
    {"crisp",
     "Pictures for the screen: sharper edges and stronger texture than in the scene. Amplifies "
     "noise; not for pictures that are processed further.",
     crisp()},
}};

} // namespace

std::span<const Preset> presets() {
    return kPresets;
}

} // namespace velorn
