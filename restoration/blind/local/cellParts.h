#pragma once

#include "restoration/blind/local/Cells.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Team.h"

#include <vector>

namespace restoration {

/// The parts of a picture that its cells look at, in the order of the cells, without values that
/// transforms cannot take (usablePart.h).
///
/// A part is a cell and its surroundings: along each axis 4/3 of the cell and at least 256 pixels,
/// but no more than the picture and `longest`. Where `longest` is less than the cell, the part is
/// the one with the most edges (edgeParts.h).
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
std::vector<Plane> cellParts(const Plane& luminance, const Cells& cells, int longest, Team& team);

} // namespace restoration
