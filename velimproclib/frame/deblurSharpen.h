#pragma once

#include "velimproclib/tiles/BlockProcP3.h"
#include "velimproclib/veldeblurcv/DeblurTile.h"
#include "velimproclib/veldeblurcv/detail/DetailStage.h"
#include "velorncore10.h"

#include <cstdint>

namespace vel {

/// The settings of `ornDeblurSharpen`, in the order of its arguments. velorncore10.h describes the
/// effect of each.
struct DeblurSettings {
    bool deconvolve;
    float deconvLambda;
    float deconvAlpha;
    float limitStrength;
    float edgeRadius;
    float edgeSlope;
    float edgeGain;
    float edgeFloor;
    float detailGain;
    float detailGamma;
};

/// One `ornDeblurSharpen` call. Owns the stages and the walk over the tiles, and keeps the progress
/// account of the host. One thread opens, runs and destroys it.
class DeblurCall {
public:
    /// Sets up the stages and the walk. The records must be valid; `deblurSharpen` checks them. The
    /// kernel is read here only. `progress` and the pixels must outlive the call.
    /// @throws const char*, int or cv::Exception from the stages and the walk
    DeblurCall(ProgressRecord* progress, const ImageRecord& image, const KernelRecord& kernel,
               const DeblurSettings& settings);

    /// Restores the image tile by tile.
    /// @return VELORN_OK, or VELORN_CANCELLED if the callback asked for it
    /// @throws `kColumnGap` or `kNoPixels` if the kernel is too large for the tiles, and the
    ///         failures of the stages
    int32_t run();

private:
    /// The stages that the settings open.
    struct Gates {
        explicit Gates(const DeblurSettings& settings);

        bool deconv;
        bool edge;
        bool detail;
    };
    /// Stages 1 and 2 with the settings of the call.
    struct SetUpTile : CDeblurTile {
        SetUpTile(const ImageRecord& image, const KernelRecord& kernel,
                  const DeblurSettings& settings);
    };

    std::int64_t unitsPerStep() const;
    void restore(TilePlanes& planes);
    void finish(TilePlanes& planes);
    bool notify(std::int64_t current);

    ProgressRecord* m_progress;
    DeblurSettings m_settings;
    Gates m_gates;
    SetUpTile m_tile;
    CDetailStage m_detail;
    CBlockProcP3 m_blocks;
};

/// Body of `ornDeblurSharpen`, to be run by the call frame: makes the first progress notification,
/// checks the records and opens the call.
/// @param progress must not be null; its callback may be null
/// @throws const char* for unusable records, `kNoPixels` for an image without pixels, and the
///         failures of the constructor of `DeblurCall`
DeblurCall deblurSharpen(ProgressRecord* progress, const ImageRecord* image,
                         const KernelRecord* kernel, const DeblurSettings& settings);

} // namespace vel
