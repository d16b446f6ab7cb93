#pragma once

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

namespace vel {

/// The floating-point control word of a thread (MXCSR on x86): rounding mode, treatment of
/// denormals, exception masks and flags. Empty on processors without SSE.
class ControlWord {
public:
    static ControlWord ofThisThread() noexcept {
#if defined(__SSE__)
        return ControlWord(_mm_getcsr());
#else
        return ControlWord(0);
#endif
    }

    void applyToThisThread() const noexcept {
#if defined(__SSE__)
        _mm_setcsr(m_bits);
#endif
    }

private:
    explicit ControlWord(unsigned bits) noexcept : m_bits(bits) {}

    [[maybe_unused]] unsigned m_bits;
};

/// Lets the current thread work under the control word of another thread while the object lives.
/// The thread gets its own word back afterwards. Belongs to the thread that creates it.
class AdoptedControlWord {
public:
    explicit AdoptedControlWord(const ControlWord& word) noexcept
        : m_own(ControlWord::ofThisThread()) {
        word.applyToThisThread();
    }
    ~AdoptedControlWord() { m_own.applyToThisThread(); }
    AdoptedControlWord(const AdoptedControlWord&) = delete;
    AdoptedControlWord& operator=(const AdoptedControlWord&) = delete;

private:
    ControlWord m_own;
};

} // namespace vel
