#pragma once

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <OpenImageIO/imageio.h>
#include <string>
#include <vector>

namespace vel::test {

/// A colour profile with one text tag, complete enough for image formats to store it.
/// @param space its colour space, four letters
inline std::vector<unsigned char> minimalProfile(const std::string& space = "RGB ") {
    std::vector<unsigned char> profile(168, 0);
    const auto put = [&](std::size_t at, const std::string& text) {
        std::copy(text.begin(), text.end(), profile.begin() + static_cast<std::ptrdiff_t>(at));
    };
    put(0, std::string("\0\0\0\xA8", 4));
    put(8, std::string("\x02\x40\0\0", 4));
    put(12, "mntr" + space + "XYZ ");
    put(36, "acsp");
    put(68, std::string("\0\0\xF6\xD6\0\x01\0\0\0\0\xD3\x2D", 12)); // the D50 white point
    // One tag: name, offset and size.
    put(128, std::string("\0\0\0\x01"
                         "cprt"
                         "\0\0\0\x90\0\0\0\x18",
                         16));
    put(144, std::string("text\0\0\0\0"
                         "nobody's own",
                         20));
    return profile;
}

inline void attachProfile(OIIO::ImageSpec& spec, const std::vector<unsigned char>& profile) {
    spec.attribute("ICCProfile",
                   OIIO::TypeDesc(OIIO::TypeDesc::UINT8, static_cast<int>(profile.size())),
                   profile.data());
}

/// Varied samples over the whole range of `T`.
template <class T>
std::vector<T> variedSamples(const OIIO::ImageSpec& spec) {
    std::vector<T> samples(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
    std::uint32_t state = 12345;
    for (T& sample : samples) {
        state = state * 1664525u + 1013904223u;
        sample = static_cast<T>(state >> (32 - 8 * sizeof(T)));
    }
    return samples;
}

/// Writes a picture with the image library alone.
template <class T>
void writePicture(const std::filesystem::path& path, OIIO::ImageSpec spec,
                  const std::vector<T>& samples) {
    const auto output = OIIO::ImageOutput::create(path.string());
    ASSERT_TRUE(output);
    if (spec.alpha_channel >= 0) {
        spec.attribute("oiio:UnassociatedAlpha", 1);
    }
    ASSERT_TRUE(output->open(path.string(), spec)) << output->geterror();
    ASSERT_TRUE(output->write_image(OIIO::BaseTypeFromC<T>::value, samples.data()))
        << output->geterror();
    ASSERT_TRUE(output->close()) << output->geterror();
}

/// Reads a picture with the image library alone, with alpha and colours as stored.
template <class T>
std::vector<T> readPicture(const std::filesystem::path& path, OIIO::ImageSpec& spec) {
    OIIO::ImageSpec wishes;
    wishes.attribute("oiio:UnassociatedAlpha", 1);
    const auto input = OIIO::ImageInput::open(path.string(), &wishes);
    if (!input) {
        ADD_FAILURE() << OIIO::geterror();
        return {};
    }
    spec = input->spec();
    std::vector<T> samples(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
    EXPECT_TRUE(
        input->read_image(0, 0, 0, spec.nchannels, OIIO::BaseTypeFromC<T>::value, samples.data()))
        << input->geterror();
    return samples;
}

} // namespace vel::test
