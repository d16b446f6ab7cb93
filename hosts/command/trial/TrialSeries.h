#pragma once

#include "hosts/command/pictures/ImageFile.h"
#include "hosts/command/pictures/PictureArea.h"
#include "hosts/command/sheet/restoredPart.h"
#include "hosts/command/terminal/Interrupt.h"
#include "hosts/command/trial/TrialStrength.h"
#include "hosts/command/trial/TrialTile.h"
#include "velorn.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace velorn {

/// A blur that a trial removes.
struct TrialBlur {
    /// For the rows and columns as stored.
    api::Kernel kernel;
    /// What gives `velorn deblur` this blur: "--disc 4".
    std::string words;
    /// May be empty.
    std::string remark;
};

/// What all restorations of a trial have in common.
struct TrialSettings {
    /// Without region and profile. The strength counts where a trial uses the automatic one.
    VelornRestoreSettings settings{};
    /// The options that give `velorn deblur` these settings; empty, or begins with a blank.
    std::string words;
    /// The options that it needs besides when a strength is given; empty, or begins with a blank.
    std::string strengthWords;
};

/// Restores one part of a picture in several ways.
class TrialSeries {
public:
    /// All arguments but `area` outlive the object.
    /// @param path name of the picture in messages
    /// @param area in the stored picture
    TrialSeries(const ImageFile& picture, const std::filesystem::path& path,
                const PictureArea& area, const TrialSettings& settings, const Interrupt& interrupt);

    /// Restores the part with each strength for each blur, in this order.
    /// @throws Failure that names the picture, Interrupted
    std::vector<TrialTile> restored(const std::vector<TrialBlur>& blurs,
                                    const std::vector<TrialStrength>& strengths,
                                    const api::Progress& progress) const;

private:
    std::vector<TrialTile> restoredWith(const TrialBlur& blur,
                                        const std::vector<TrialStrength>& strengths,
                                        const api::Progress& progress) const;
    RestoredPart part(const TrialBlur& blur, float strength, const api::Progress& progress) const;
    TrialTile automaticTile(const TrialBlur& blur, const RestoredPart& part) const;
    TrialTile tile(const TrialBlur& blur, const TrialStrength& strength, float value,
                   RgbPixels pixels) const;

    const ImageFile& m_picture;
    const std::filesystem::path& m_path;
    const PictureArea m_area;
    const TrialSettings& m_settings;
    const Interrupt& m_interrupt;
};

} // namespace velorn
