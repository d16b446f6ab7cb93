#include "hosts/command/terminal/standardDescriptors.h"

#include <cerrno>
#include <fcntl.h>
#include <initializer_list>
#include <poll.h>
#include <unistd.h>

namespace velorn {

void reserveStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) {
            // Opening takes the lowest free number, which is this one.
            ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

bool isReaderGone(int descriptor) {
    struct pollfd state {};
    state.fd = descriptor;
    return ::poll(&state, 1, 0) == 1 && (state.revents & POLLERR) != 0;
}

} // namespace velorn
