#include "hosts/command/terminal/SilencedErrors.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace velorn {

SilencedErrors::SilencedErrors() : m_former(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
    std::fflush(stderr);
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (m_former >= 0 && null >= 0) {
        dup2(null, STDERR_FILENO);
    }
    if (null >= 0) {
        close(null);
    }
}

SilencedErrors::~SilencedErrors() {
    if (m_former >= 0) {
        std::fflush(stderr);
        dup2(m_former, STDERR_FILENO);
        close(m_former);
    }
}

} // namespace velorn
