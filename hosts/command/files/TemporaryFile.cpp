#include "hosts/command/files/TemporaryFile.h"

#include "hosts/command/files/fileFailures.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <random>
#include <set>
#include <stdio.h>
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

/// Renames a file unless `target` exists; `errno` has the reason of a failure.
bool renameToNew(const char* path, const char* target) {
    if (::renameat2(AT_FDCWD, path, AT_FDCWD, target, RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    // The file system lacks the operation; a link never replaces a file either.
    return ::link(path, target) == 0 && ::unlink(path) == 0;
}

/// The temporary files that exist. Locked whenever one appears or disappears.
struct Registry {
    std::mutex mutex;
    std::set<std::filesystem::path> paths;
};

Registry& registry() {
    // Never destroyed: threads may outlive the static objects.
    static auto& all = *new Registry;
    return all;
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
        const std::lock_guard lock(registry().mutex);
        ::unlink(m_path.c_str());
        registry().paths.erase(m_path);
    }
}

void TemporaryFile::removeAll() {
    registry().mutex.lock();
    for (const auto& path : registry().paths) {
        ::unlink(path.c_str());
    }
}

void TemporaryFile::open() {
    std::random_device random;
    do {
        const auto name = ".velorn-" + std::to_string(random()) + m_target.extension().string();
        const auto path = m_target.parent_path() / name;
        const std::lock_guard lock(registry().mutex);
        // The umask reduces these permissions as for every new file.
        m_descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (m_descriptor >= 0) {
            m_path = path;
            registry().paths.insert(path);
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
    commit(true);
}

void TemporaryFile::commitNew() {
    commit(false);
}

void TemporaryFile::commit(bool replaces) {
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
    if (closed != 0) {
        fail();
    }
    const std::lock_guard lock(registry().mutex);
    if (replaces ? ::rename(m_path.c_str(), m_target.c_str()) != 0
                 : !renameToNew(m_path.c_str(), m_target.c_str())) {
        fail();
    }
    registry().paths.erase(m_path);
    m_path.clear();
}

void TemporaryFile::fail() const {
    throw cannotWrite(m_shown, std::strerror(errno));
}

} // namespace velorn
