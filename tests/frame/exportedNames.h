#pragma once

#include "tests/frame/LoadedLibrary.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <set>
#include <string>

namespace vel::test {

#ifdef _WIN32

/// All names that the library exports, read from the export directory of its loaded image.
inline std::set<std::string> exportedNames(const LoadedLibrary& library) {
    const auto* const image = reinterpret_cast<const std::uint8_t*>(library.handle());
    const auto at = [&](DWORD offset) { return static_cast<const void*>(image + offset); };
    const auto* const start = static_cast<const IMAGE_DOS_HEADER*>(at(0));
    const auto* const headers =
        static_cast<const IMAGE_NT_HEADERS*>(at(static_cast<DWORD>(start->e_lfanew)));
    const auto* const exports = static_cast<const IMAGE_EXPORT_DIRECTORY*>(
        at(headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress));
    const auto* const offsets = static_cast<const DWORD*>(at(exports->AddressOfNames));
    std::set<std::string> names;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
        names.emplace(static_cast<const char*>(at(offsets[i])));
    }
    EXPECT_EQ(exports->NumberOfFunctions, exports->NumberOfNames) << "exports without a name";
    return names;
}

#else

/// All names that the library exports, listed by nm.
inline std::set<std::string> exportedNames(const LoadedLibrary&) {
    const std::string command =
        std::string("nm -D --defined-only --format=posix '") + VELORN_LIBRARY + "'";
    std::set<std::string> names;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    char line[512];
    while (pipe && std::fgets(line, sizeof line, pipe.get()) != nullptr) {
        names.emplace(std::string(line).substr(0, std::string(line).find(' ')));
    }
    return names;
}

#endif

} // namespace vel::test
