#include "hosts/command/files/TemporaryFile.h"

#include "hosts/command/files/fileFailures.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace velorn {
namespace {

/// As many links in a row as the system follows.
constexpr int kMostLinks = 40;

/// The file that `target` leads to through links. It need not exist.
std::filesystem::path withoutLinks(const std::filesystem::path& target) {
    std::filesystem::path file = target;
    std::error_code error;
    for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(file, error); ++i) {
        file = file.parent_path() / std::filesystem::read_symlink(file, error);
    }
    return file;
}

} // namespace

TemporaryFile::TemporaryFile(const std::filesystem::path& target)
    : m_shown(target), m_target(withoutLinks(target)) {
    std::error_code error;
    const auto status = std::filesystem::status(m_target, error);
    if (error == std::errc::too_many_symbolic_link_levels) {
        throw cannotWrite(m_shown, error.message());
    }
    if (std::filesystem::is_directory(status)) {
        throw cannotWrite(m_shown, "it is a folder");
    }
    if (std::filesystem::exists(status)) {
        if (!std::filesystem::is_regular_file(status)) {
            throw cannotWrite(m_shown, "not a regular file");
        }
        if (::access(m_target.c_str(), W_OK) != 0) {
            fail();
        }
    }
    open();
}

TemporaryFile::~TemporaryFile() {
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
    if (!m_path.empty()) {
        ::unlink(m_path.c_str());
    }
}

void TemporaryFile::open() {
    std::random_device random;
    do {
        const auto name = ".velorn-" + std::to_string(random()) + m_target.extension().string();
        const auto path = m_target.parent_path() / name;
        // The umask reduces these permissions as for every new file.
        m_descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (m_descriptor >= 0) {
            m_path = path;
        }
    } while (m_descriptor < 0 && errno == EEXIST);
    if (m_descriptor < 0) {
        fail();
    }
}

void TemporaryFile::write(std::span<const unsigned char> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(m_descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            fail();
        }
        bytes = bytes.subspan(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
}

void TemporaryFile::commit() {
    struct stat former {};
    if (::stat(m_target.c_str(), &former) == 0 &&
        ::fchmod(m_descriptor, former.st_mode & 07777) != 0) {
        fail();
    }
    if (::fsync(m_descriptor) != 0) {
        fail();
    }
    const int closed = ::close(m_descriptor);
    m_descriptor = -1;
    if (closed != 0 || ::rename(m_path.c_str(), m_target.c_str()) != 0) {
        fail();
    }
    m_path.clear();
}

void TemporaryFile::fail() const {
    throw cannotWrite(m_shown, std::strerror(errno));
}

} // namespace velorn
