#pragma once

#include <filesystem>
#include <vector>

namespace velorn {

/// A file that lives in memory and yet has a name to be opened by. For encoders that read back
/// what they have written, which the picture library's own files in memory do not allow.
class MemoryFile {
public:
    /// @throws Failure when the system gives none.
    MemoryFile();
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// The name, good for opening within this process.
    std::filesystem::path path() const;

    std::vector<unsigned char> content() const;

private:
    int m_descriptor;
};

} // namespace velorn
