#pragma once

#include "restoration/planes/Plane.h"
#include "velimproclib/veldeblurcv/detail/DetailCurve.h"
#include "velimproclib/veldeblurcv/detail/EdgeSmoother.h"

namespace restoration {

/// The settings of `DetailEnhancer`; velorn.h describes them.
struct DetailSettings {
    float gain = 0.0f;
    float gamma = 0.0f;

    /// Whether they change a picture enough to run.
    bool isOn() const noexcept { return gain > 0.01f || gamma > 0.01f; }
};

/// Enhances the detail of a plane: what an edge-preserving smoother (`vel::CEdgeSmoother`) removes
/// passes a curve (`vel::CDetailCurve`) and is added to the smooth base again. The plane is cut to
/// 0..1 first.
///
/// Serial; an instance belongs to one worker.
class DetailEnhancer {
public:
    explicit DetailEnhancer(const DetailSettings& settings) noexcept : m_settings(settings) {}

    /// Enhances `plane` in place.
    /// @throws std::bad_alloc
    void enhance(Plane& plane);

private:
    DetailSettings m_settings;
    vel::CEdgeSmoother m_smoother;
    vel::CDetailCurve m_curve;
    Plane m_input;
    Plane m_guide;
};

} // namespace restoration
