#include "hosts/command/files/OutputFile.h"

#include "hosts/command/files/standardStreams.h"
#include "hosts/command/terminal/Failure.h"
#include "hosts/command/terminal/Interrupt.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>
#include <unistd.h>

namespace velorn {

OutputFile::OutputFile(const std::filesystem::path& path) {
    if (!isStandardStream(path)) {
        m_file.emplace(path);
    } else if (isatty(STDOUT_FILENO) != 0) {
        throw Failure("the standard output is a terminal; redirect it to a file or a pipe");
    }
}

void OutputFile::write(std::span<const unsigned char> bytes) {
    if (m_file) {
        m_file->write(bytes);
        return;
    }
    while (!bytes.empty()) {
        const ssize_t count = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (count < 0 && errno == EPIPE) {
            throw Interrupted(SIGPIPE);
        }
        if (count < 0 && errno != EINTR) {
            throw Failure(std::string("cannot write to the standard output: ") +
                          std::strerror(errno));
        }
        bytes = bytes.subspan(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
}

void OutputFile::commit() {
    if (m_file) {
        m_file->commit();
    }
}

void OutputFile::commitNew() {
    if (m_file) {
        m_file->commitNew();
    }
}

} // namespace velorn
