#pragma once

#include <cstdint>
#include <string>

namespace velorn {

/// The reason for a status other than `VELORN_OK` of the last library call of this process, as text
/// for a message.
std::string statusText(std::int32_t status);

} // namespace velorn
