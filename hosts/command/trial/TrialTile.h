#pragma once

#include "hosts/command/pictures/RgbPixels.h"

#include <string>

namespace velorn {

/// A restoration that a trial shows.
struct TrialTile {
    /// As displayed, with 8 bits.
    RgbPixels pixels;
    /// What `velorn deblur` needs for the same result: "--disc 4 --lambda 5400".
    std::string words;
    /// What the words do not say, such as the automatic strength; may be empty.
    std::string remark;
};

} // namespace velorn
