#pragma once

#include <span>

namespace velorn {

/// The file formats whose metadata Exiv2 reads here. It writes all of them except Heif.
enum class Container { Other, Jpeg, Png, Tiff, Webp, Heif };

/// The container of a file by its first bytes; 12 suffice.
Container containerOf(std::span<const unsigned char> file);

} // namespace velorn
