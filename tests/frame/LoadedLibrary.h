#pragma once

#include "velorncore10.h"

#include <gtest/gtest.h>
#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace vel::test {

/// The shared library, loaded at run time with its functions found by name, as hosts do it.
class LoadedLibrary {
public:
#ifdef _WIN32
    using Handle = HMODULE;

    LoadedLibrary() : m_handle(LoadLibraryA(VELORN_LIBRARY)) {
        EXPECT_NE(m_handle, nullptr) << VELORN_LIBRARY << ": error " << GetLastError();
    }
    ~LoadedLibrary() {
        if (m_handle != nullptr) {
            FreeLibrary(m_handle);
        }
    }
    /// True if the library is in the process.
    static bool staysInTheProcess() {
        return GetModuleHandleA(VELORN_LIBRARY) != nullptr;
    }
#else
    using Handle = void*;

    LoadedLibrary() : m_handle(dlopen(VELORN_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
        EXPECT_NE(m_handle, nullptr) << dlerror();
    }
    ~LoadedLibrary() {
        if (m_handle != nullptr) {
            dlclose(m_handle);
        }
    }
    /// True if the library is in the process.
    static bool staysInTheProcess() {
        void* const handle = dlopen(VELORN_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
        if (handle != nullptr) {
            dlclose(handle);
        }
        return handle != nullptr;
    }
#endif
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    Handle handle() const {
        return m_handle;
    }

    template <class Function>
    Function* find(const char* name) const {
#ifdef _WIN32
        // The compiler warns about casts between two function types, therefore through void*.
        void* const symbol = reinterpret_cast<void*>(GetProcAddress(m_handle, name));
#else
        void* const symbol = dlsym(m_handle, name);
#endif
        EXPECT_NE(symbol, nullptr) << name;
        return reinterpret_cast<Function*>(symbol);
    }

private:
    Handle m_handle;
};

} // namespace vel::test

/// The export `name` of `library`, with its own type.
#define VELORN_FIND(library, name) (library).find<decltype(name)>(#name)
