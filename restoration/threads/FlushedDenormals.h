#pragma once

#include "velimproclib/primitives/base/ControlWord.h"

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

namespace restoration {

/// Gives the current thread a control word while the object lives, with denormal operands and
/// results taken as zero: they slow the transforms of dark areas down and change no visible digit.
class FlushedDenormals {
public:
    explicit FlushedDenormals(const vel::ControlWord& word) noexcept : m_adopted(word) {
#if defined(__SSE__)
        constexpr unsigned kFlushResults = 0x8000;
        constexpr unsigned kFlushOperands = 0x0040;
        _mm_setcsr(_mm_getcsr() | kFlushResults | kFlushOperands);
#endif
    }

private:
    vel::AdoptedControlWord m_adopted;
};

} // namespace restoration
