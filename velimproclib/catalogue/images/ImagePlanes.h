#pragma once

#include "velimproclib/images/Image.h"

#include <cstdint>

/// Moves between images, over the target's region of interest. `c` is the channel, 0 to 2. The
/// source's region must be at least as large as the target's. The target's `m_status` receives the
/// result of the primitive; nothing is thrown.
namespace vel {

/// Fills channel `c` of `dst` from `src`.
void imgPlaneToChannelU8(std::int32_t c, const IMG<unsigned char, 1>& src,
                         IMG3<unsigned char>& dst) noexcept;

/// The same for 16 bits; bit patterns are copied unchanged.
void imgPlaneToChannelS16(std::int32_t c, const IMG<short, 1>& src, IMG3<short>& dst) noexcept;

/// Copies channel `c` of `src` into `dst`.
void imgChannelToPlaneU8(std::int32_t c, const IMG3<unsigned char>& src,
                         IMG<unsigned char, 1>& dst) noexcept;

/// The same for 16 bits.
void imgChannelToPlaneS16(std::int32_t c, const IMG3<short>& src, IMG<short, 1>& dst) noexcept;

/// Widens all three channels to floats, exactly.
void imgConvertC3U8toF32(const IMG3<unsigned char>& src, IMG<float, 3>& dst) noexcept;

} // namespace vel
