#include "restoration/boundary/checkPicture.h"

#include "restoration/boundary/argumentChecks.h"
#include "restoration/pictures/PictureFormat.h"

#include <cstdint>

namespace restoration {
namespace {

/// Leaves room for the margins of tiles.
constexpr std::int64_t kLongestSide = std::int64_t{1} << 30;

std::uint64_t magnitude(std::ptrdiff_t stride) {
    const auto bits = static_cast<std::uint64_t>(stride);
    return stride < 0 ? 0 - bits : bits;
}

void checkRows(const VelornPicture& picture, const std::string& name) {
    const std::uint64_t rowBytes =
        std::uint64_t{bytesPerPixel(picture)} * static_cast<std::uint64_t>(picture.width);
    const std::uint64_t stride = magnitude(picture.rowStride);
    if (picture.height > 1 && stride < rowBytes) {
        refuse(name + "->rowStride is " + numberText(std::int64_t{picture.rowStride}) +
               ", but a row has " + std::to_string(rowBytes) + " bytes");
    }
    constexpr std::uint64_t kAddresses = PTRDIFF_MAX;
    if (rowBytes > kAddresses ||
        (picture.height > 1 && stride > kAddresses / static_cast<std::uint64_t>(picture.height))) {
        refuse(name + "->rowStride is " + numberText(std::int64_t{picture.rowStride}) +
               ", too large for " + std::to_string(picture.height) + " rows");
    }
}

void requireSame(std::int32_t value, std::int32_t expected, const std::string& name,
                 const std::string& origin) {
    if (value != expected) {
        refuse(name + " is " + numberText(std::int64_t{value}) + ", but " + origin + " has " +
               numberText(std::int64_t{expected}));
    }
}

} // namespace

void checkPicture(const VelornPicture* picture, const std::string& name) {
    requirePointer(picture, name);
    requirePointer(picture->data, name + "->data");
    requireRange(picture->width, 1, kLongestSide, name + "->width");
    requireRange(picture->height, 1, kLongestSide, name + "->height");
    requireRange(picture->channels, 1, 4, name + "->channels");
    if (picture->hasAlpha != 0 && picture->channels < 2) {
        refuse(name + "->channels is 1, but alpha needs a colour channel beside it");
    }
    requireRange(picture->samples, VELORN_SAMPLES_U8, VELORN_SAMPLES_F32, name + "->samples");
    checkRows(*picture, name);
}

void checkTarget(const VelornPicture* target, const VelornPicture& source, std::int32_t width,
                 std::int32_t height) {
    checkPicture(target, "target");
    requireSame(target->width, width, "target->width", "the region");
    requireSame(target->height, height, "target->height", "the region");
    requireSame(target->channels, source.channels, "target->channels", "the source");
    requireSame(target->hasAlpha != 0, source.hasAlpha != 0, "target->hasAlpha", "the source");
}

} // namespace restoration
