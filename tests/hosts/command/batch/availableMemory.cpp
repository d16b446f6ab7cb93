#include "hosts/command/batch/availableMemory.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using vel::test::writeText;
using velorn::availableMemory;

constexpr std::uint64_t kGibi = std::uint64_t{1} << 30;

class AvailableMemory : public testing::Test {
protected:
    void write(const std::string& name, const std::string& text) {
        const auto path = m_folder / name;
        std::filesystem::create_directories(path.parent_path());
        writeText(path, text);
    }
    std::uint64_t available() const { return availableMemory(m_folder / ""); }

    vel::test::TemporaryFolder m_folder;
};

TEST_F(AvailableMemory, SystemReportsIt) {
    write("proc/meminfo", "MemTotal:  8388608 kB\nMemFree: 5 kB\nMemAvailable: 4194304 kB\n");
    EXPECT_EQ(available(), 4 * kGibi);
}

TEST_F(AvailableMemory, GroupLeavesLess) {
    write("proc/meminfo", "MemAvailable: 4194304 kB\n");
    write("proc/self/cgroup", "0::/user/job\n");
    write("sys/fs/cgroup/user/memory.max", "1073741824\n");
    write("sys/fs/cgroup/user/memory.current", "805306368\n");
    write("sys/fs/cgroup/user/memory.stat", "anon 5\ninactive_file 268435456\n");
    write("sys/fs/cgroup/user/job/memory.max", "max\n");
    write("sys/fs/cgroup/user/job/memory.current", "805306368\n");
    EXPECT_EQ(available(), kGibi / 2);
}

TEST_F(AvailableMemory, GroupOfTheFirstVersionLeavesLess) {
    write("proc/meminfo", "MemAvailable: 4194304 kB\n");
    write("proc/self/cgroup", "5:cpu,cpuacct:/a\n4:memory:/a\n");
    write("sys/fs/cgroup/memory/a/memory.limit_in_bytes", "1073741824\n");
    write("sys/fs/cgroup/memory/a/memory.usage_in_bytes", "1073741825\n");
    EXPECT_EQ(available(), 0u);
}

TEST_F(AvailableMemory, SystemWithoutReportsHasOneGibibyte) {
    EXPECT_EQ(available(), kGibi);
}

TEST(AvailableMemoryOfThisSystem, IsPositive) {
    EXPECT_GT(availableMemory(), 0u);
}

} // namespace
