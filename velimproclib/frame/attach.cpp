// What happens when a process loads and unloads the library.
#include "velimproclib/primitives/ProcessorVariants.h"

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

namespace vel {
namespace {

#if defined(__SSE__)
constexpr unsigned kDenormalsAreZero = 1u << 6;
constexpr unsigned kUnderflowMasked = 1u << 11;
constexpr unsigned kFlushToZero = 1u << 15;
#endif

/// Denormals cost hundreds of cycles each and carry nothing that a picture shows. The setting stays
/// with the attaching thread, and with the threads that it starts from now on.
void flushDenormals() noexcept {
#if defined(__SSE__)
    _mm_setcsr(_mm_getcsr() | kDenormalsAreZero | kUnderflowMasked | kFlushToZero);
#endif
}

[[gnu::constructor]] void attachProcess() noexcept {
    selectProcessorVariants();
    flushDenormals();
}

} // namespace
} // namespace vel
