#include "hosts/command/files/MemoryFile.h"

#include "hosts/command/terminal/Failure.h"

#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velorn {

MemoryFile::MemoryFile() : m_descriptor(memfd_create("velorn", MFD_CLOEXEC)) {
    if (m_descriptor < 0) {
        throw Failure(std::string("cannot create a file in memory: ") + std::strerror(errno));
    }
}

MemoryFile::~MemoryFile() {
    close(m_descriptor);
}

std::filesystem::path MemoryFile::path() const {
    return "/proc/self/fd/" + std::to_string(m_descriptor);
}

void MemoryFile::append(std::span<const unsigned char> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(m_descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            throw Failure(std::string("cannot write a file in memory: ") + std::strerror(errno));
        }
        bytes = bytes.subspan(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
}

std::vector<unsigned char> MemoryFile::content() const {
    struct stat state {};
    if (fstat(m_descriptor, &state) != 0) {
        throw Failure(std::string("cannot read a file in memory: ") + std::strerror(errno));
    }
    std::vector<unsigned char> bytes(static_cast<std::size_t>(state.st_size));
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            pread(m_descriptor, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        if (count <= 0) {
            throw Failure(std::string("cannot read a file in memory: ") + std::strerror(errno));
        }
        done += static_cast<std::size_t>(count);
    }
    return bytes;
}

} // namespace velorn
