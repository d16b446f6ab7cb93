#include "velimproclib/catalogue/images/ImagePlanes.h"

#include "velimproclib/catalogue/pixels/ColorConversions.h"
#include "velimproclib/catalogue/pixels/FurtherChannelMoves.h"
#include "velimproclib/primitives/pixels/ChannelMoves.h"

namespace vel {
namespace {

// The moves copy bit patterns and ignore the sign.
std::uint16_t* asUnsigned(short* pixels) noexcept {
    return reinterpret_cast<std::uint16_t*>(pixels);
}
const std::uint16_t* asUnsigned(const short* pixels) noexcept {
    return reinterpret_cast<const std::uint16_t*>(pixels);
}

} // namespace

void imgPlaneToChannelU8(std::int32_t c, const IMG<unsigned char, 1>& src,
                         IMG3<unsigned char>& dst) noexcept {
    dst.m_status = planeToChannelC3U8(src.pixels(), src.m_step, dst.pixels() + c, dst.m_step,
                                      dst.m_roiW, dst.m_roiH);
}

void imgPlaneToChannelS16(std::int32_t c, const IMG<short, 1>& src, IMG3<short>& dst) noexcept {
    dst.m_status =
        planeToChannelC3U16(asUnsigned(src.pixels()), src.m_step, asUnsigned(dst.pixels()) + c,
                            dst.m_step, dst.m_roiW, dst.m_roiH);
}

void imgChannelToPlaneU8(std::int32_t c, const IMG3<unsigned char>& src,
                         IMG<unsigned char, 1>& dst) noexcept {
    dst.m_status = channelToPlaneC3U8(src.pixels() + c, src.m_step, dst.pixels(), dst.m_step,
                                      dst.m_roiW, dst.m_roiH);
}

void imgChannelToPlaneS16(std::int32_t c, const IMG3<short>& src, IMG<short, 1>& dst) noexcept {
    dst.m_status =
        channelToPlaneC3U16(asUnsigned(src.pixels()) + c, src.m_step, asUnsigned(dst.pixels()),
                            dst.m_step, dst.m_roiW, dst.m_roiH);
}

void imgConvertC3U8toF32(const IMG3<unsigned char>& src, IMG<float, 3>& dst) noexcept {
    dst.m_status = convertU8toF32C3(src.pixels(), src.m_step, dst.pixels(), dst.m_step, dst.m_roiW,
                                    dst.m_roiH);
}

} // namespace vel
