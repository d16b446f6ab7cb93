// What happens when a process loads and unloads the library.
#include "velimproclib/primitives/base/ProcessorVariants.h"

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#endif

namespace vel {
namespace {

#if defined(__SSE__)
constexpr unsigned kDenormalsAreZero = 1u << 6;
constexpr unsigned kUnderflowMasked = 1u << 11;
constexpr unsigned kFlushToZero = 1u << 15;
#endif

/// Denormals cost hundreds of cycles each and carry nothing that a picture shows. The setting stays
/// with the attaching thread, and where threads inherit it, with those that it starts from now on.
void flushDenormals() noexcept {
#if defined(__SSE__)
    _mm_setcsr(_mm_getcsr() | kDenormalsAreZero | kUnderflowMasked | kFlushToZero);
#endif
}

#ifndef _WIN32
[[gnu::constructor]]
#endif
void attachProcess() noexcept {
    selectProcessorVariants();
    flushDenormals();
}

} // namespace
} // namespace vel

#ifdef _WIN32

namespace {

/// The OpenMP runtime is part of the library, and its threads wait inside it for the next call: the
/// code must stay where it is when the host unloads it.
void stayLoaded() noexcept {
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCWSTR>(&stayLoaded), &self);
}

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        stayLoaded();
        vel::attachProcess();
    }
    return TRUE;
}

#endif
