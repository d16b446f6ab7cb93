#include "hosts/command/formats/Format.h"

#include "hosts/command/terminal/Failure.h"
#include "tests/hosts/command/failureText.h"

#include <gtest/gtest.h>
#include <OpenImageIO/imageio.h>
#include <set>

namespace {

using velorn::Failure;
using velorn::Format;
using velorn::PictureShape;

const Format& named(const char* name) {
    return *velorn::formatNamed(name);
}

TEST(Format, ExtensionsAndNamesSelectOneFormatInAnyCase) {
    std::set<std::string_view> seen;
    for (const Format& format : velorn::kFormats) {
        EXPECT_TRUE(seen.insert(format.codecName).second);
        for (const std::string_view extension : format.extensions) {
            if (!extension.empty()) {
                EXPECT_TRUE(seen.insert(extension).second || extension == format.codecName);
                EXPECT_EQ(velorn::formatOfPath("a." + std::string(extension)), &format);
            }
        }
        EXPECT_EQ(velorn::formatNamed(format.name), &format);
        EXPECT_EQ(velorn::formatOfCodec(format.codecName), &format);
    }
    EXPECT_EQ(velorn::formatOfPath("A.B.JPG"), &named("jpeg"));
    for (const char* name : {"a", ".png", "a.", "a.xyz", "png"}) {
        EXPECT_EQ(velorn::formatOfPath(name), nullptr) << name;
    }
}

TEST(Format, LibraryReadsEveryFormatAndWritesThoseItIsAskedFor) {
    for (const Format& format : velorn::kFormats) {
        const std::string name(format.codecName);
        EXPECT_TRUE(OIIO::ImageInput::create(name)) << name << OIIO::geterror();
        EXPECT_TRUE(!format.isWritten || OIIO::ImageOutput::create(name)) << name;
    }
}

TEST(Format, OtherFormatsAreRefusedWithAListOfThoseOffered) {
    const std::string list = "JPEG, PNG, TIFF, WebP, PNM, BMP, TGA, EXR and HDR";
    for (const char* name : {"a.xyz", "a.dpx", "a.heic", "a.gif", "a.sgi", "a.jp2", "a"}) {
        const std::string text = vel::test::failureText([&] { velorn::outputFormatOfPath(name); });
        EXPECT_NE(text.find(std::string("'") + name + "'"), std::string::npos) << text;
        EXPECT_NE(text.find(list), std::string::npos) << text;
    }
    EXPECT_THROW(velorn::outputFormatNamed("dpx"), Failure);
    EXPECT_EQ(&velorn::outputFormatNamed("tif"), &named("tiff"));
}

TEST(Format, SidesAboveTheLimitAreRefused) {
    for (const Format& format : velorn::kFormats) {
        EXPECT_NO_THROW(velorn::checkSides(format, {format.largestSide, 1, 3, 8}));
        if (format.largestSide < velorn::kUnlimited) {
            EXPECT_THROW(velorn::checkSides(format, {format.largestSide + 1, 1, 3, 8}), Failure);
            EXPECT_THROW(velorn::checkSides(format, {1, format.largestSide + 1, 3, 8}), Failure);
        }
    }
}

TEST(Format, HeldShapeDropsWhatTheFormatHasNoRoomFor) {
    const PictureShape greyAlpha{9, 7, 2, 16};
    EXPECT_EQ(velorn::heldShape(named("png"), greyAlpha), greyAlpha);
    EXPECT_EQ(velorn::heldShape(named("jpeg"), greyAlpha), (PictureShape{9, 7, 1, 8}));
    EXPECT_EQ(velorn::heldShape(named("bmp"), greyAlpha), (PictureShape{9, 7, 4, 8}));
    EXPECT_EQ(velorn::heldShape(named("hdr"), greyAlpha), (PictureShape{9, 7, 3, 16}));
    EXPECT_EQ(velorn::heldShape(named("webp"), {9, 7, 1, 8}), (PictureShape{9, 7, 3, 8}));
    EXPECT_EQ(velorn::lossesOf(named("jpeg"), greyAlpha).size(), 2u);
    EXPECT_TRUE(velorn::lossesOf(named("png"), greyAlpha).empty());
}

} // namespace
