#pragma once

/// The address sanitizer ends the program at an allocation that cannot be served. Test programs
/// that include this get the null pointer that a heap gives. The sanitizer's library must see it.
#if defined(__SANITIZE_ADDRESS__)
extern "C" [[gnu::weak, gnu::visibility("default")]] const char* __asan_default_options();
extern "C" [[gnu::weak, gnu::visibility("default")]] const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
#endif
