#include "hosts/command/options/ModelOptions.h"

#include "hosts/command/arguments/alternatives.h"
#include "hosts/command/arguments/NumberRange.h"
#include "velorn.hpp"

#include <algorithm>
#include <array>
#include <span>

namespace velorn {
namespace {

constexpr const char* kGroup = "Settings";
constexpr NumberRange kFramePasses{0.0f, 8.0f};

/// A value of an option that takes names.
struct Choice {
    const char* name;
    std::int32_t value;
};

constexpr std::array<Choice, 3> kLights{{{"auto", VELORN_LIGHT_AUTOMATIC},
                                         {"linear", VELORN_LIGHT_LINEAR},
                                         {"display", VELORN_LIGHT_DISPLAY}}};
std::vector<std::string> namesOf(std::span<const Choice> choices) {
    std::vector<std::string> names;
    for (const Choice& choice : choices) {
        names.emplace_back(choice.name);
    }
    return names;
}

/// The value of a name in the list.
std::int32_t chosen(std::span<const Choice> choices, const std::string& name) {
    return std::ranges::find(choices, name, &Choice::name)->value;
}

} // namespace

void ModelOptions::addTo(ArgumentParser& parser) {
    m_quality.addTo(parser);
    parser
        .add("--light", m_light,
             alternatives(namesOf(kLights)) + ", default: " + m_light +
                 "\nWhether the blur is removed from light (linear) or from the stored values "
                 "(display). auto uses what explains the picture better.")
        .valueName("NAME")
        .group(kGroup)
        .choices(namesOf(kLights));
    parser
        .add("--keep-clipped", m_keepsClipped,
             "Trust clipped pixels. By default, what clipped highlights hide is estimated, which "
             "avoids rings around lamps and reflections.")
        .group(kGroup);
    parser
        .add("--frame-passes", m_framePasses,
             kFramePasses.text() + ", default: " + std::to_string(m_framePasses) +
                 "\nAbove 0, the surroundings of the picture are reconstructed, to avoid streaks "
                 "along its borders. 0 turns the reconstruction off.")
        .valueName("N")
        .group(kGroup);
    m_threads.addTo(parser, kGroup);
}

void ModelOptions::applyTo(VelornRestoreSettings& settings) const {
    kFramePasses.check("--frame-passes", static_cast<float>(m_framePasses));
    const VelornRestoreSettings automatic = api::restoreSettings();
    const bool isManual =
        settings.strength != automatic.strength || settings.alpha != automatic.alpha;
    settings.quality =
        m_quality.ofRestoration().value_or(isManual ? VELORN_QUALITY_FAST : VELORN_QUALITY_NORMAL);
    settings.light = chosen(kLights, m_light);
    settings.recoverClipped = m_keepsClipped ? 0 : 1;
    settings.continueFrame = m_framePasses > 0 ? 1 : 0;
    settings.threads = m_threads.result();
}

} // namespace velorn
