#include "hosts/command/metadata/Container.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using velorn::Container;

Container of(const std::string& text) {
    return velorn::containerOf(std::vector<unsigned char>(text.begin(), text.end()));
}

TEST(Container, IsRecognisedByTheFirstBytes) {
    EXPECT_EQ(of("\xFF\xD8\xFF\xE0"), Container::Jpeg);
    EXPECT_EQ(of("\x89PNG\r\n\x1A\n...."), Container::Png);
    EXPECT_EQ(of(std::string("II*\0....", 8)), Container::Tiff);
    EXPECT_EQ(of(std::string("MM\0*....", 8)), Container::Tiff);
    EXPECT_EQ(of("RIFF....WEBP"), Container::Webp);
    EXPECT_EQ(of("....ftypheic"), Container::Heif);
}

TEST(Container, OfOtherAndShortFilesIsOther) {
    EXPECT_EQ(of(""), Container::Other);
    EXPECT_EQ(of("BM......"), Container::Other);
    EXPECT_EQ(of("RIFF....WAVE"), Container::Other);
    EXPECT_EQ(of("RIFF....WEB"), Container::Other);
    EXPECT_EQ(of("\xFF\xD8"), Container::Other);
}

} // namespace
