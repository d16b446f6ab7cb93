#include "hosts/command/terminal/ErrorStream.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace velorn {

ErrorStream::ErrorStream()
    : std::ostream(nullptr), m_descriptor(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)),
      m_buffer(m_descriptor) {
    rdbuf(&m_buffer);
}

ErrorStream::~ErrorStream() {
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

ErrorStream::Buffer::int_type ErrorStream::Buffer::overflow(int_type letter) {
    if (traits_type::eq_int_type(letter, traits_type::eof())) {
        return traits_type::not_eof(letter);
    }
    const char text = traits_type::to_char_type(letter);
    return xsputn(&text, 1) == 1 ? letter : traits_type::eof();
}

std::streamsize ErrorStream::Buffer::xsputn(const char* text, std::streamsize size) {
    std::streamsize done = 0;
    while (done < size) {
        const ssize_t count =
            ::write(m_descriptor, text + done, static_cast<std::size_t>(size - done));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        done += count;
    }
    return done;
}

} // namespace velorn
