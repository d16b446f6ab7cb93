#pragma once

#include "restoration/finishing/EdgeAwareSmoother.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"
#include "velimproclib/veldeblurcv/detail/DetailCurve.h"

namespace restoration {

/// The settings of `DetailEnhancer`; velorn.h describes them.
struct DetailSettings {
    float gain = 0.0f;
    float gamma = 0.0f;

    /// Whether they change a picture enough to run.
    bool isOn() const noexcept { return gain > 0.01f || gamma > 0.01f; }
};

/// Enhances the detail of a plane: what `EdgeAwareSmoother` removes passes a curve
/// (`vel::CDetailCurve`) and is added to the smooth base again. Values are cut to 0..1 first.
///
/// Serial; an instance belongs to one worker and keeps its memory.
class DetailEnhancer {
public:
    explicit DetailEnhancer(const DetailSettings& settings) : m_settings(settings) {}

    /// Enhances `plane` in place.
    /// @throws Failure for a cancelled call; std::bad_alloc
    void enhance(Plane& plane, const Cancellation& cancellation);

private:
    DetailSettings m_settings;
    EdgeAwareSmoother m_smoother;
    vel::CDetailCurve m_curve;
    Plane m_detail;
};

} // namespace restoration
