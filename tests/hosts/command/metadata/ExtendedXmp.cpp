#include "hosts/command/metadata/ExtendedXmp.h"

#include "hosts/command/metadata/Exiv2Session.h"

#include <gtest/gtest.h>

namespace {

using velorn::Exiv2Session;

/// A packet with two properties of the given lengths.
std::string packet(std::size_t city, std::size_t credit) {
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
           "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
           "rdf:about='' xmlns:photoshop='http://ns.adobe.com/photoshop/1.0/'>"
           "<photoshop:City>" +
           std::string(city, 'a') + "</photoshop:City><photoshop:Credit>" +
           std::string(credit, 'b') + "</photoshop:Credit></rdf:Description></rdf:RDF></x:xmpmeta>";
}

TEST(ExtendedXmp, DividedPacketIsJoinedAgain) {
    const Exiv2Session session;
    const auto divided = velorn::dividedXmp(packet(10, 90000));
    ASSERT_TRUE(divided);
    EXPECT_LE(divided->standard.size(), velorn::kLargestStandardXmp);
    EXPECT_TRUE(velorn::hasExtendedXmp(divided->standard));
    EXPECT_NE(divided->standard.find(divided->digest), std::string::npos);
    EXPECT_NE(divided->standard.find(std::string(10, 'a')), std::string::npos);
    EXPECT_EQ(divided->extended.find(std::string(10, 'a')), std::string::npos);
    const auto joined = velorn::joinedXmp(divided->standard, divided->extended);
    ASSERT_TRUE(joined);
    EXPECT_FALSE(velorn::hasExtendedXmp(*joined));
    EXPECT_NE(joined->find(std::string(10, 'a')), std::string::npos);
    EXPECT_NE(joined->find(std::string(90000, 'b')), std::string::npos);
}

TEST(ExtendedXmp, DamagedPacketsAreNotDividedAndNotJoined) {
    const Exiv2Session session;
    EXPECT_FALSE(velorn::dividedXmp("<x:xmpmeta>"));
    EXPECT_FALSE(velorn::joinedXmp(packet(1, 1), "<x:xmpmeta>"));
    EXPECT_FALSE(velorn::joinedXmp("<x:xmpmeta>", packet(1, 1)));
    EXPECT_FALSE(velorn::joinedXmp(packet(1, 1), ""));
}

TEST(ExtendedXmp, SegmentsFollowTheStandardPacket) {
    const Exiv2Session session;
    const auto divided = velorn::dividedXmp(packet(10, 150000));
    ASSERT_TRUE(divided);
    const std::string segment =
        std::string("\xFF\xE1\x00\x24http://ns.adobe.com/xap/1.0/\0", 33) + "12345";
    const std::string before = std::string("\xFF\xD8", 2) + segment;
    const std::string text = before + "rest";
    const auto file =
        velorn::withExtendedXmp(std::vector<unsigned char>(text.begin(), text.end()), *divided);
    const std::string result(file.begin(), file.end());
    EXPECT_EQ(result.substr(0, before.size()), before);
    EXPECT_EQ(result.substr(result.size() - 4), "rest");
    std::size_t count = 0;
    std::size_t at = before.size();
    while (result.substr(at, 2) == "\xFF\xE1") {
        EXPECT_EQ(result.substr(at + 4, 35),
                  std::string("http://ns.adobe.com/xmp/extension/\0", 35));
        EXPECT_EQ(result.substr(at + 39, 32), divided->digest);
        at += 2 + static_cast<std::size_t>(static_cast<unsigned char>(result[at + 2]) << 8 |
                                           static_cast<unsigned char>(result[at + 3]));
        ++count;
    }
    EXPECT_EQ(at, result.size() - 4);
    EXPECT_EQ(count, divided->extended.size() / 65400 + 1);
}

TEST(ExtendedXmp, FileWithoutTheStandardPacketIsUnchanged) {
    const std::vector<unsigned char> file{0xFF, 0xD8, 0xFF, 0xD9};
    EXPECT_EQ(velorn::withExtendedXmp(file, {"s", "e", "d"}), file);
}

} // namespace
