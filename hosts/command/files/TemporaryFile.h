#pragma once

#include <filesystem>
#include <span>

namespace velorn {

/// A file with a temporary name in the target's folder that replaces the target once it is
/// complete. The target does not change before `commit`. The destructor removes a file that was not
/// committed. Threads may use different objects at once.
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
    /// The same for a target that does not exist. @throws Failure also when it exists.
    void commitNew();

    /// Removes all temporary files of the process. Threads that create or commit one afterwards
    /// block for ever: the process is about to end without waiting for them.
    static void removeAll();

private:
    void open();
    void commit(bool replaces);
    [[noreturn]] void fail() const;

    std::filesystem::path m_shown;
    std::filesystem::path m_target;
    std::filesystem::path m_path;
    int m_descriptor = -1;
};

} // namespace velorn
