#pragma once

#include "velorncore10.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace vel::test {

/// The shared library as a host meets it: loaded at run time, functions found by name.
class LoadedLibrary {
public:
    LoadedLibrary() : m_handle(dlopen(VELORN_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
        EXPECT_NE(m_handle, nullptr) << dlerror();
    }
    ~LoadedLibrary() {
        if (m_handle != nullptr) {
            dlclose(m_handle);
        }
    }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    template <class Function>
    Function* find(const char* name) const {
        auto* const function = reinterpret_cast<Function*>(dlsym(m_handle, name));
        EXPECT_NE(function, nullptr) << name;
        return function;
    }

private:
    void* m_handle;
};

} // namespace vel::test

/// The export `name` of `library`, with its own type.
#define VELORN_FIND(library, name) (library).find<decltype(name)>(#name)
