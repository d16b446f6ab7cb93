#pragma once

#include <filesystem>
#include <span>
#include <vector>

namespace velorn {

/// A file in memory that can be opened by name. For encoders that read back what they have written,
/// which the in-memory files of the image library do not support.
class MemoryFile {
public:
    /// @throws Failure when the system cannot create the file.
    MemoryFile();
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// The name to open the file by; valid in this process only.
    std::filesystem::path path() const;

    /// Appends `bytes`. @throws Failure when there is no memory for them.
    void append(std::span<const unsigned char> bytes);

    /// The bytes written so far. @throws Failure when they cannot be read.
    std::vector<unsigned char> content() const;

private:
    int m_descriptor;
};

} // namespace velorn
