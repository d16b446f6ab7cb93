#include "velimproclib/images/ScaleConverters.h"

#include "velimproclib/images/Image.h"
#include "velimproclib/primitives/arithmetic/ScaledU16.h"
#include "velimproclib/primitives/pixels/Conversions.h"

namespace vel {
namespace {

constexpr std::int32_t kBitsBetweenScales = 7;
constexpr std::uint16_t kBlackOf15Bits = 128;

} // namespace

void convertU8toU15(const std::uint8_t* src, std::int32_t srcStep, std::int32_t width,
                    std::int32_t height, Unaligned<std::uint16_t>* dst,
                    std::int32_t dstStep) noexcept {
    if (convertU8toU16(src, srcStep, dst, dstStep, width, height) == kOk) {
        addConstScaledU16(1, dst, dstStep, width, height, -kBitsBetweenScales);
    }
}

void convertU15toU8(const Unaligned<std::uint16_t>* src, std::int32_t srcStep, std::int32_t width,
                    std::int32_t height, std::uint8_t* dst, std::int32_t dstStep) {
    GIMG<unsigned short> levels(width, height);
    if (subConstScaledU16(src, srcStep, kBlackOf15Bits, unaligned(levels.pixels()), levels.m_step,
                          width, height, kBitsBetweenScales) == kOk) {
        convertU16toU8(levels.pixels(), levels.m_step, dst, dstStep, width, height);
    }
}

} // namespace vel
