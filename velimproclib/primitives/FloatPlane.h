#pragma once

#include <cstddef>
#include <cstring>

namespace vel {

/// A plane of floats in a caller's memory: any alignment, any step in bytes between rows. A view;
/// the arithmetic of addresses is that of pointers, whatever the size of the plane.
class FloatPlane {
public:
    FloatPlane(float* data, int step) : m_data(reinterpret_cast<char*>(data)), m_step(step) {}
    /// For planes that are only read.
    FloatPlane(const float* data, int step) : FloatPlane(const_cast<float*>(data), step) {}

    char* at(std::ptrdiff_t x, std::ptrdiff_t y) const {
        return m_data + y * m_step + x * static_cast<std::ptrdiff_t>(sizeof(float));
    }
    float get(std::ptrdiff_t x, std::ptrdiff_t y) const {
        float value;
        std::memcpy(&value, at(x, y), sizeof value);
        return value;
    }
    void put(std::ptrdiff_t x, std::ptrdiff_t y, float value) const {
        std::memcpy(at(x, y), &value, sizeof value);
    }

private:
    char* m_data;
    std::ptrdiff_t m_step;
};

} // namespace vel
