#include "velimproclib/veldeblurcv/estimation/solver/SelectedPixels.h"

#include <algorithm>
#include <cstring>

namespace vel {

namespace {

/// The first byte that is not 0, or `end`. Skips eight bytes at a time, because masks are mostly
/// empty.
const unsigned char* firstSelected(const unsigned char* at, const unsigned char* end) noexcept {
    for (std::uint64_t eight = 0; end - at >= 8; at += 8) {
        std::memcpy(&eight, at, 8);
        if (eight != 0) {
            break;
        }
    }
    return std::find_if(at, end, [](unsigned char m) { return m != 0; });
}

} // namespace

bool SelectedPixels::reachPixelInRow() noexcept {
    if (m_row < m_rows.begin || m_row >= m_rows.end || m_column >= m_columns.end) {
        return false;
    }
    const unsigned char* row = m_mask.ptr(static_cast<int>(m_row));
    const unsigned char* end = row + m_columns.end;
    const unsigned char* found = firstSelected(row + m_column, end);
    m_column = found - row;
    return found != end;
}

} // namespace vel
