#pragma once

#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// Moves the centre of mass to the middle by whole pixels; what falls off is lost. The sum stays 1.
void recentre(SquareKernel& kernel);

} // namespace restoration
