#pragma once

#include "velimproclib/primitives/base/rows.h"

#include <cstddef>
#include <cstdint>

namespace vel {

/// A view of a plane of floats with any alignment and any step in bytes between rows.
class FloatPlane {
public:
    FloatPlane(float* data, std::int32_t step) : m_data(data), m_step(step) {}
    /// For planes that are only read.
    FloatPlane(const float* data, std::int32_t step) : FloatPlane(const_cast<float*>(data), step) {}

    Unaligned<float>* row(int y) const {
        return rowAt(unaligned(m_data), m_step, static_cast<std::size_t>(y));
    }
    char* at(std::ptrdiff_t x, int y) const {
        return reinterpret_cast<char*>(row(y)) + x * static_cast<std::ptrdiff_t>(sizeof(float));
    }
    float get(std::ptrdiff_t x, int y) const { return row(y)[x].value; }
    void put(std::ptrdiff_t x, int y, float value) const { row(y)[x].value = value; }

private:
    float* m_data;
    std::int32_t m_step;
};

} // namespace vel
