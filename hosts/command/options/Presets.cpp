#include "hosts/command/options/Presets.h"

#include <array>

namespace velorn {
namespace {

using Settings = VelornRestoreSettings;

constexpr std::array<SettingValue, 1> kLens{{{&Settings::detailGain, 0.1f}}};
constexpr std::array<SettingValue, 2> kMotion{{{&Settings::alpha, 0.3f}, {&Settings::limit, 0.8f}}};
constexpr std::array<SettingValue, 5> kScan{{{&Settings::alpha, 0.3f},
                                             {&Settings::limit, 1.0f},
                                             {&Settings::edgeSlope, 0.5f},
                                             {&Settings::edgeGain, 1.1f},
                                             {&Settings::edgeFloor, 0.02f}}};
constexpr std::array<SettingValue, 3> kCrisp{
    {{&Settings::edgeSlope, 0.3f}, {&Settings::edgeGain, 1.2f}, {&Settings::detailGain, 0.15f}}};

constexpr std::array<Preset, 4> kPresets{{
    {"lens",
     "Pictures out of focus: slightly more contrast in texture, which this blur weakens most. "
     "Edges stay as restored.",
     kLens},
    {"motion",
     "Camera shake and moving objects, where the motion is known only roughly: smooth areas "
     "with few edges, fewer double edges and fewer fringes. Faint texture is lost.",
     kMotion},
    {"scan",
     "Scanned text and drawings: dark, clean strokes without fringes on a smooth background. "
     "Makes photographs look drawn.",
     kScan},
    {"crisp",
     "Pictures for the screen: sharper edges and stronger texture than in the scene. Amplifies "
     "noise; not for pictures that are processed further.",
     kCrisp},
}};

} // namespace

std::span<const Preset> presets() {
    return kPresets;
}

} // namespace velorn
