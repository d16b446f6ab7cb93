#include "hosts/command/files/InputFile.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/standardStreams.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace velorn {

InputFile::InputFile(const std::filesystem::path& path, std::uint64_t mostBytes)
    : m_shown(path), m_openable(path) {
    if (isStandardStream(path)) {
        m_shown = "standard input";
        readStandardInput(mostBytes);
        m_openable = m_memory->path();
    } else if (path.string().find_first_of("?#") != std::string::npos) {
        m_descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (m_descriptor < 0) {
            throw cannotRead(path, std::strerror(errno));
        }
        m_openable = "/proc/self/fd/" + std::to_string(m_descriptor);
    }
}

InputFile::~InputFile() {
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

void InputFile::readStandardInput(std::uint64_t mostBytes) {
    m_memory.emplace();
    std::vector<unsigned char> buffer(std::size_t{1} << 20);
    std::uint64_t done = 0;
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            throw cannotRead(m_shown, std::strerror(errno));
        }
        if (count == 0) {
            break;
        }
        done += static_cast<std::uint64_t>(count);
        if (done > mostBytes) {
            throw cannotRead(m_shown, "more than " + std::to_string(mostBytes) + " bytes");
        }
        m_memory->append({buffer.data(), static_cast<std::size_t>(count)});
    }
    if (done == 0) {
        throw cannotRead(m_shown, "no bytes");
    }
}

} // namespace velorn
