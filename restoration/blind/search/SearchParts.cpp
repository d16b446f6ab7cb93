#include "restoration/blind/search/SearchParts.h"

#include "restoration/blind/parts/diagonalNoise.h"
#include "restoration/blind/parts/edgeParts.h"
#include "restoration/blind/parts/fillLamps.h"
#include "restoration/blind/parts/sharpestFirst.h"
#include "restoration/blind/parts/usablePart.h"

#include <algorithm>

namespace restoration {
namespace {

constexpr double kLevels = 255.0;
/// Side of the transforms of a part that the search chooses.
constexpr int kChosenSide = 512;
/// Parts whose sharpness is compared, and parts in which kernels are found.
constexpr int kComparedParts = 6;
constexpr std::size_t kSearchedParts = 3;

std::vector<Plane> partsOf(const Plane& luminance, int side, int compared, Team& team) {
    team.progress().beginPhase(0.03, 0);
    const int width = std::min(side, luminance.width());
    const int height = std::min(side, luminance.height());
    const std::vector<Rect> places =
        sharpestFirst(luminance, edgeParts(luminance, width, height, compared, team), team);
    std::vector<Plane> parts;
    for (std::size_t i = 0; i < std::min(places.size(), kSearchedParts); ++i) {
        parts.push_back(usablePart(luminance, places[i]));
        fillLamps(parts.back(), team.cancellation());
    }
    return parts;
}

/// The central part of `plane`, at most `side` wide and high.
Plane centralPart(const Plane& plane, int side) {
    const int width = std::min(plane.width(), side);
    const int height = std::min(plane.height(), side);
    return usablePart(plane,
                      {(plane.width() - width) / 2, (plane.height() - height) / 2, width, height});
}

} // namespace

SearchParts::SearchParts(const Plane& luminance, const FindSettings& settings, Team& team)
    : m_isChosen(settings.choosesPart()),
      m_parts(partsOf(luminance, m_isChosen ? kChosenSide : settings.partSide,
                      m_isChosen && settings.start == nullptr ? kComparedParts : 1, team)),
      m_noise(diagonalNoise(first())) {}

Plane SearchParts::croppedFor(int side, std::size_t part) const {
    const Plane& plane = m_parts[part];
    const int longer = std::max(plane.width(), plane.height());
    return centralPart(plane, m_isChosen ? kChosenSide - 2 * (side / 2) - 2 : longer);
}

Plane SearchParts::centre() const {
    return centralPart(first(), kChosenSide);
}

double SearchParts::noiseVariance() const noexcept {
    return m_noise * m_noise / (kLevels * kLevels);
}

} // namespace restoration
