#pragma once

#include <filesystem>
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

    /// The bytes written so far. @throws Failure when they cannot be read.
    std::vector<unsigned char> content() const;

private:
    int m_descriptor;
};

} // namespace velorn
