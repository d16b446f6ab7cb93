#pragma once

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

namespace vel::test {

#if defined(__SSE__)
inline constexpr bool kHasControlWord = true;
#else
inline constexpr bool kHasControlWord = false;
#endif

/// Both control bits: denormal inputs and denormal results become zero.
inline constexpr unsigned kFlushDenormals = (1u << 6) | (1u << 15);

/// Sets the denormal bits of the current thread to `bits` for its lifetime. Other bits are
/// unchanged.
class ControlBits {
public:
    explicit ControlBits([[maybe_unused]] unsigned bits) {
#if defined(__SSE__)
        m_before = _mm_getcsr();
        _mm_setcsr((m_before & ~kFlushDenormals) | bits);
#endif
    }
    ~ControlBits() {
#if defined(__SSE__)
        _mm_setcsr(m_before);
#endif
    }
    ControlBits(const ControlBits&) = delete;
    ControlBits& operator=(const ControlBits&) = delete;

private:
    [[maybe_unused]] unsigned m_before = 0;
};

/// True if the current thread treats denormals as zero and produces none. Reads the control word,
/// because compilers fold constants and move arithmetic.
inline bool flushesDenormals() {
#if defined(__SSE__)
    return (_mm_getcsr() & kFlushDenormals) == kFlushDenormals;
#else
    return false;
#endif
}

} // namespace vel::test
