#pragma once

#include <filesystem>
#include <span>

namespace velorn {

/// A file with a temporary name in the target's folder that replaces the target once it is
/// complete. The target does not change before `commit`. The destructor removes a file that was not
/// committed.
class TemporaryFile {
public:
    /// Opens the temporary file. If `target` is a symbolic link, `commit` replaces or creates the
    /// file that it points to.
    /// @throws Failure that names the target: no such folder, no permission, not a regular file.
    explicit TemporaryFile(const std::filesystem::path& target);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Appends `bytes`. @throws Failure: disc full, size limit and similar errors.
    void write(std::span<const unsigned char> bytes);

    /// Flushes the content to disc and renames the file to the target. An existing target passes
    /// its permissions on. @throws Failure; the target is then unchanged.
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
