#pragma once

/// By default the address sanitizer ends the program when an allocation fails. In test programs
/// that include this header, the allocation returns null as the heap does. The function must be
/// visible to the sanitizer's library.
#if defined(__SANITIZE_ADDRESS__)
extern "C" [[gnu::weak, gnu::visibility("default")]] const char* __asan_default_options();
extern "C" [[gnu::weak, gnu::visibility("default")]] const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
#endif
