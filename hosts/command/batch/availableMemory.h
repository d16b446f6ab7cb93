#pragma once

#include <cstdint>
#include <filesystem>

namespace velorn {

/// The bytes that this process may still allocate without swapping: what the system has available,
/// or what the process's control groups leave, whichever is less.
/// @param root the folder that holds `proc` and `sys`; another one than "/" in tests
std::uint64_t availableMemory(const std::filesystem::path& root = "/");

} // namespace velorn
