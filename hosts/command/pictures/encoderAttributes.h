#pragma once

#include "hosts/command/metadata/PictureMetadata.h"

#include <OpenImageIO/imageio.h>
#include <string>

namespace velorn {

/// What the encoder of a picture needs besides the pixels: the kind of alpha, the resolution, the
/// profile, and named attributes that `MetadataWriter` does not write: texts of PNG files, and
/// everything in formats without metadata blocks. Encoders would turn others into tags and texts.
/// @param source the attributes of the file that was read
/// @param sourceFormat its format as OpenImageIO names it; empty for a new picture
/// @param format the format to write, likewise
OIIO::ParamValueList encoderAttributes(const OIIO::ParamValueList& source,
                                       const std::string& sourceFormat, const std::string& format,
                                       const PictureMetadata& metadata);

/// Adds the resolution among `source` to `metadata`.
void addResolution(const OIIO::ParamValueList& source, PictureMetadata& metadata);

/// The names of texts of a PNG file that other formats do not hold.
/// @param source the attributes of that file
std::vector<std::string> textNames(const OIIO::ParamValueList& source,
                                   const PictureMetadata& metadata);

} // namespace velorn
