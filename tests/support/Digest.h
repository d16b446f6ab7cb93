#pragma once

#include <cinttypes>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

namespace vel::test {

/// 64-bit FNV-1a hash of a sequence of bytes.
class Digest {
public:
    template <class T>
    void add(std::span<const T> values) {
        for (const std::byte byte : std::as_bytes(values)) {
            m_value = (m_value ^ std::to_integer<std::uint64_t>(byte)) * 0x100000001B3u;
        }
    }
    template <class T>
    void add(const std::vector<T>& values) {
        add(std::span<const T>(values));
    }
    std::string text() const {
        char digits[17];
        std::snprintf(digits, sizeof digits, "%016" PRIX64, m_value);
        return digits;
    }

private:
    std::uint64_t m_value = 0xCBF29CE484222325u;
};

} // namespace vel::test
