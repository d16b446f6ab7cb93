#pragma once

#include "hosts/command/pictures/ImageFile.h"

namespace velorn {

/// A JPEG file without metadata that shows `picture` as stored, at most 160 pixels wide and high.
/// Each pixel is the mean of those that it replaces; alpha is ignored.
/// @throws Failure when the encoder fails.
std::vector<unsigned char> jpegThumbnail(const ImageFile& picture);

} // namespace velorn
