#include "hosts/command/files/InputFile.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/openForReading.h"
#include "hosts/command/files/standardStreams.h"
#include "hosts/command/terminal/Interrupt.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <vector>

namespace velorn {
namespace {

/// Milliseconds between two checks for a signal while the standard input has no bytes.
constexpr int kPatience = 100;

/// Waits until the standard input has bytes or has ended.
/// @throws Interrupted
void waitForInput() {
    struct pollfd input {};
    input.fd = STDIN_FILENO;
    input.events = POLLIN;
    do {
        Interrupt::checkCurrent();
    } while (::poll(&input, 1, kPatience) <= 0);
}

} // namespace

InputFile::InputFile(const std::filesystem::path& path, std::uint64_t mostBytes)
    : m_shown(shownInput(path)), m_openable(path) {
    if (isStandardStream(path)) {
        readStandardInput(mostBytes);
        m_openable = m_memory->path();
    } else if (path.string().find_first_of("?#") != std::string::npos) {
        openForReading(path);
        m_descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (m_descriptor < 0) {
            throw cannotRead(path, std::strerror(errno));
        }
        m_openable = "/proc/self/fd/" + std::to_string(m_descriptor);
    }
}

std::string InputFile::named(std::string message) const {
    const std::string& name = m_openable.native();
    const std::string& shown = m_shown.native();
    if (name == shown) {
        return message;
    }
    for (std::size_t at = message.find(name); at != std::string::npos;
         at = message.find(name, at + shown.size())) {
        message.replace(at, name.size(), shown);
    }
    return message;
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
        waitForInput();
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
