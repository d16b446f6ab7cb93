#pragma once

#include "restoration/planes/Plane.h"
#include "velimproclib/veldeblurcv/sharpening/SharpenEdge.h"

namespace restoration {

/// The settings of `EdgeSharpener`; velorn.h describes them.
struct EdgeSettings {
    float radius = 0.85f;
    float slope = 0.0f;
    float gain = 1.0f;
    float floor = 0.005f;

    /// Whether they change a picture enough to run.
    bool isOn() const noexcept { return slope > 0.0f || gain > 1.01f; }
};

/// Sharpens the edges of a plane (`vel::CSharpenEdge`). Results depend on pixels up to 8 away; the
/// outermost 8 rows and columns of a plane are less exact.
///
/// Serial; an instance belongs to one worker.
class EdgeSharpener {
public:
    explicit EdgeSharpener(const EdgeSettings& settings) noexcept;

    /// @param sharpened  receives the result; of the size of `plane` and not the same
    /// @throws std::bad_alloc
    void sharpen(const Plane& plane, Plane& sharpened);

private:
    vel::CSharpenEdge m_sharpener;
};

} // namespace restoration
