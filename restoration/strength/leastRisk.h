#pragma once

#include <functional>

namespace restoration {

/// Places on the scale of strengths: sixteenths of an octave below the strongest. Whole places keep
/// the search free of logarithms, whose last bits depend on the system.
inline constexpr int kPlacesPerOctave = 16;

/// The strength `place` sixteenths of an octave below `strongest`; `place` is at least 0.
float strengthAt(float strongest, int place) noexcept;

/// Finds the place of the least risk among 0..`last` with few evaluations, usually three or four:
/// from the strongest downwards in steps of two octaves until the risk rises, then by parabolas.
/// The risk should have one minimum. A risk that is nowhere lower than at 0 gives 0.
int leastRisk(int last, const std::function<double(int place)>& risk);

} // namespace restoration
