#include "hosts/command/files/MemoryFile.h"

#include <fstream>
#include <gtest/gtest.h>

namespace {

using velorn::MemoryFile;

std::string textOf(const MemoryFile& file) {
    const auto bytes = file.content();
    return {bytes.begin(), bytes.end()};
}

TEST(MemoryFile, ContentIsWhatIsWrittenUnderTheName) {
    const MemoryFile file;
    EXPECT_EQ(textOf(file), "");
    std::ofstream(file.path()) << "abcdef";
    EXPECT_EQ(textOf(file), "abcdef");
    std::ofstream(file.path()) << "xy";
    EXPECT_EQ(textOf(file), "xy");
}

TEST(MemoryFile, FilesAreIndependent) {
    const MemoryFile first;
    const MemoryFile second;
    std::ofstream(first.path()) << "first";
    EXPECT_EQ(textOf(second), "");
}

} // namespace
