#include "hosts/command/terminal/SilencedErrors.h"

#include <cstdio>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>

namespace velorn {
namespace {

/// What stderr was before the first of the objects that exist.
struct Redirection {
    std::mutex mutex;
    int objects = 0;
    int former = -1;
};

Redirection& redirection() {
    // Never destroyed: threads may outlive the static objects.
    static auto& only = *new Redirection;
    return only;
}

int silenced() {
    std::fflush(stderr);
    const int former = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (former >= 0 && null >= 0) {
        dup2(null, STDERR_FILENO);
    }
    if (null >= 0) {
        close(null);
    }
    return former;
}

void restore(int former) {
    if (former >= 0) {
        std::fflush(stderr);
        dup2(former, STDERR_FILENO);
        close(former);
    }
}

} // namespace

SilencedErrors::SilencedErrors() {
    Redirection& all = redirection();
    const std::lock_guard lock(all.mutex);
    if (all.objects++ == 0) {
        all.former = silenced();
    }
}

SilencedErrors::~SilencedErrors() {
    Redirection& all = redirection();
    const std::lock_guard lock(all.mutex);
    if (--all.objects == 0) {
        restore(all.former);
    }
}

} // namespace velorn
