#include "hosts/command/terminal/SilencedErrors.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace velorn {

SilencedErrors::SilencedErrors() : m_former(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
    std::fflush(stderr);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (m_former >= 0 && nowhere >= 0) {
        dup2(nowhere, STDERR_FILENO);
    }
    if (nowhere >= 0) {
        close(nowhere);
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
