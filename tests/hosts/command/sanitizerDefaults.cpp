/// What a build with the address sanitizer asks for before main; other builds never call it.
extern "C" {

[[gnu::visibility("default")]] const char* __asan_default_options();
[[gnu::visibility("default")]] const char* __lsan_default_suppressions();

/// Frame pointers are missing where the image library leaks.
const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}

/// Its reader of PNG files jumps over destructors when a file ends early.
const char* __lsan_default_suppressions() {
    return "leak:libOpenImageIO";
}
}
