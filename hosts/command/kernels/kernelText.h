#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "velorn.h"

#include <string>

namespace velorn {

/// The blur of a kernel that was found, in words: "motion of about 14 pixels at 32 degrees".
/// @param shown       the kernel for the picture as displayed
/// @param orientation how the picture is stored, which the angle of `report` refers to
std::string blurText(const VelornFindReport& report, const BlurKernel& shown, int orientation);

/// The direction of a motion along the rows and columns as a file with the given EXIF orientation
/// (1..8) stores them, in the picture as displayed. Both angles are in degrees counter-clockwise
/// from the horizontal; the result is at least 0 and below 180.
double shownAngle(double stored, int orientation);

/// A share of 0..1 as whole percent: "83 %".
std::string percentText(float share);

/// How far the picture is from what the kernel explains: "1.6 times the noise", a standard
/// deviation.
std::string misfitText(const VelornFindReport& report);

} // namespace velorn
