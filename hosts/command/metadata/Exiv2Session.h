#pragma once

#include <mutex>

namespace velorn {

/// Exclusive use of Exiv2. Its XMP toolkit keeps namespaces in objects of the process; therefore
/// only one thread at a time reads or writes metadata. The first object prepares the library: no
/// messages on stderr.
class Exiv2Session {
public:
    Exiv2Session();

private:
    std::lock_guard<std::mutex> m_lock;
};

} // namespace velorn
