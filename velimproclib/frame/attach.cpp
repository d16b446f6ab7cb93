// Process attach and detach.
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

/// Denormals cost hundreds of cycles each and contribute nothing visible. The setting remains with
/// the attaching thread; threads that help with a call adopt the control word of its caller.
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

/// Keeps the library in the process after the host unloads it: the OpenMP runtime is part of the
/// library, and its threads wait inside it for the next call.
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
