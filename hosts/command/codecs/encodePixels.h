#pragma once

#include "hosts/command/codecs/EncodingOptions.h"
#include "hosts/command/formats/Format.h"
#include "hosts/command/pixels/Pixels.h"

#include <OpenImageIO/imageio.h>
#include <vector>

namespace velorn {

/// The bytes of a file with these pixels. Encodes in memory, because some encoders end the process
/// when a write to a file fails.
/// @param pixels in a shape that the format holds, see `heldShape`
/// @param attributes metadata that PNG and TIFF files store by name
/// @throws Failure with the message of the encoder, or if the format cannot have these sides.
std::vector<unsigned char> encodePixels(const Pixels& pixels, const Format& format,
                                        const EncoderSettings& settings,
                                        const OIIO::ParamValueList& attributes);

} // namespace velorn
