#pragma once

#include "hosts/command/files/MemoryFile.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace velorn {

/// A file to read, under a name that every library opens. The image library takes names with "?"
/// and "#" apart, and the standard input has no name and cannot be read twice.
class InputFile {
public:
    /// Bytes that the standard input may have.
    static constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 32;

    /// Opens the file; reads the standard input into memory if `path` is "-".
    /// @param mostBytes bytes that the standard input may have
    /// @throws Failure that names the file: it cannot be read, or the standard input has more
    ///         bytes. Interrupted while the standard input is read.
    explicit InputFile(const std::filesystem::path& path, std::uint64_t mostBytes = kMostBytes);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// The name to open the file by; valid in this process only.
    const std::filesystem::path& openable() const { return m_openable; }
    /// The name for messages.
    const std::filesystem::path& shown() const { return m_shown; }
    /// `message` of a library with `shown` instead of `openable`.
    std::string named(std::string message) const;

private:
    void readStandardInput(std::uint64_t mostBytes);

    std::filesystem::path m_shown;
    std::filesystem::path m_openable;
    std::optional<MemoryFile> m_memory;
    int m_descriptor = -1;
};

} // namespace velorn
