#pragma once

#include <filesystem>
#include <span>

namespace velorn {

/// A file under a temporary name in the target's folder, that takes the target's place only when
/// it is complete. Until `commit` the target stays as it was; without it nothing stays behind.
class TemporaryFile {
public:
    /// Opens the temporary file. A target that is a symbolic link keeps being one: the file it
    /// points to is replaced.
    /// @throws Failure naming the target: no such folder, no permission, not a regular file.
    explicit TemporaryFile(const std::filesystem::path& target);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Writes the file's whole content. @throws Failure: disc full, size limit and the like.
    void write(std::span<const unsigned char> bytes);

    /// Brings the content to the disc and renames it to the target, which keeps its permissions if
    /// it existed. @throws Failure; the target is then as it was.
    void commit();

private:
    void open();
    [[noreturn]] void fail() const;

    std::filesystem::path m_shown;
    std::filesystem::path m_target;
    std::filesystem::path m_path;
    int m_descriptor = -1;
};

} // namespace velorn
