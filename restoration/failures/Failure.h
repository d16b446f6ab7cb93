#pragma once

#include "velorn.h"

#include <stdexcept>
#include <string>

namespace restoration {

/// The only exception that the library throws itself: a status and its message, which the boundary
/// returns to the host. Memory failures are std::bad_alloc.
class Failure : public std::runtime_error {
public:
    Failure(VelornStatus status, const std::string& message)
        : std::runtime_error(message), m_status(status) {}

    VelornStatus status() const noexcept { return m_status; }

private:
    VelornStatus m_status;
};

} // namespace restoration
