/// The address sanitizer calls these functions before main; other builds do not.
extern "C" {

[[gnu::visibility("default")]] const char* __asan_default_options();
[[gnu::visibility("default")]] const char* __lsan_default_suppressions();

/// Leaks in the image library are recognised by the full stack; it has no frame pointers.
const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}

/// The PNG reader of the image library leaks when a file ends early.
const char* __lsan_default_suppressions() {
    return "leak:libOpenImageIO";
}
}
