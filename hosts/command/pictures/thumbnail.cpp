#include "hosts/command/pictures/thumbnail.h"

#include "hosts/command/terminal/Failure.h"

#include <algorithm>
#include <OpenImageIO/filesystem.h>

namespace velorn {
namespace {

constexpr int kLongestSide = 160;
constexpr const char* kName = "thumbnail.jpg";

struct Size {
    int width;
    int height;
};

Size reduced(Size size) {
    const int longest = std::max(size.width, size.height);
    if (longest <= kLongestSide) {
        return size;
    }
    const auto side = [&](int length) {
        return std::max(1, static_cast<int>(std::int64_t{length} * kLongestSide / longest));
    };
    return {side(size.width), side(size.height)};
}

/// The first of the `from` rows or columns that position `at` of `to` shows.
int firstOf(int at, int to, int from) {
    return static_cast<int>(std::int64_t{at} * from / to);
}

/// The mean of channel `c` in columns `left`..`right` - 1 of rows `top`..`bottom` - 1, as 8 bits.
template <class T>
std::uint8_t meanOf(const ImageFile& picture, const std::vector<T>& samples, std::size_t c,
                    Size first, Size last) {
    const auto channels = static_cast<std::size_t>(picture.channels());
    std::uint64_t sum = 0;
    for (int row = first.height; row < last.height; ++row) {
        for (int column = first.width; column < last.width; ++column) {
            const auto pixel =
                static_cast<std::size_t>(row) * static_cast<std::size_t>(picture.width()) +
                static_cast<std::size_t>(column);
            sum += samples[pixel * channels + c];
        }
    }
    const auto count = static_cast<std::uint64_t>(last.width - first.width) *
                       static_cast<std::uint64_t>(last.height - first.height);
    const std::uint64_t white = sizeof(T) == 1 ? 1 : 257;
    return static_cast<std::uint8_t>((sum + count * white / 2) / (count * white));
}

std::vector<std::uint8_t> reducedColours(const ImageFile& picture, Size size) {
    std::vector<std::uint8_t> colours;
    std::visit(
        [&](const auto& samples) {
            for (int row = 0; row < size.height; ++row) {
                for (int column = 0; column < size.width; ++column) {
                    const Size first{firstOf(column, size.width, picture.width()),
                                     firstOf(row, size.height, picture.height())};
                    const Size last{firstOf(column + 1, size.width, picture.width()),
                                    firstOf(row + 1, size.height, picture.height())};
                    for (std::size_t c = 0; c < 3; ++c) {
                        colours.push_back(
                            meanOf(picture, samples, picture.isGrey() ? 0 : c, first, last));
                    }
                }
            }
        },
        picture.samples());
    return colours;
}

} // namespace

std::vector<unsigned char> jpegThumbnail(const ImageFile& picture) {
    const Size size = reduced({picture.width(), picture.height()});
    const std::vector<std::uint8_t> colours = reducedColours(picture, size);
    OIIO::ImageSpec spec(size.width, size.height, 3, OIIO::TypeDesc::UINT8);
    spec.attribute("compression", "jpeg:85");
    std::vector<unsigned char> bytes;
    OIIO::Filesystem::IOVecOutput memory(bytes);
    const auto output = OIIO::ImageOutput::create(kName);
    if (!output) {
        throw Failure(OIIO::geterror());
    }
    output->set_ioproxy(&memory);
    if (!output->open(kName, spec) || !output->write_image(OIIO::TypeDesc::UINT8, colours.data()) ||
        !output->close()) {
        throw Failure(output->geterror());
    }
    return MetadataWriter(PictureMetadata()).writeInto(std::move(bytes), {}).file;
}

} // namespace velorn
