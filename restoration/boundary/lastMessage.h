#pragma once

#include <string_view>

/// The message of the last call on this thread. Nothing here allocates memory.
namespace restoration {

const char* lastMessage() noexcept;
void clearMessage() noexcept;

/// Keeps the first 511 bytes of `message`.
void storeMessage(std::string_view message) noexcept;

} // namespace restoration
