#pragma once

#include "hosts/command/files/TemporaryFile.h"

#include <filesystem>
#include <optional>
#include <span>

namespace velorn {

/// A file to write: a `TemporaryFile` that replaces the file of the given name, or the standard
/// output if the name is "-".
class OutputFile {
public:
    /// @throws Failure that names the file: it cannot be written, or the standard output is a
    ///         terminal.
    explicit OutputFile(const std::filesystem::path& path);

    /// Appends `bytes`.
    /// @throws Failure: disc full and similar errors. Interrupted when nobody reads the standard
    ///         output.
    void write(std::span<const unsigned char> bytes);

    /// Completes the file. The standard output is complete after each `write`. @throws Failure
    void commit();
    /// The same for a file that does not exist. @throws Failure also when it exists.
    void commitNew();

private:
    std::optional<TemporaryFile> m_file;
};

} // namespace velorn
