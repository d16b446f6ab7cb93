#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/planes/Rect.h"
#include "restoration/threads/Team.h"

#include <vector>

namespace restoration {

/// Up to `count` parts of `width` by `height` pixels of `luminance` with the most edges, among
/// several places; the one with the most first.
///
/// Edges are the gradients that L0-regularised smoothing of a reduced copy keeps, therefore fine
/// texture counts little. Parts overlap by a quarter at most, and each has at least a third of the
/// edges of the first. Both sides are at most those of the picture; parts equal in edges: the
/// topmost, then leftmost one.
/// @throws std::bad_alloc; Failure VELORN_STATUS_CANCELLED
std::vector<Rect> edgeParts(const Plane& luminance, int width, int height, int count, Team& team);

} // namespace restoration
