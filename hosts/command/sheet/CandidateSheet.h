#pragma once

#include "hosts/command/pictures/ImageFile.h"
#include "hosts/command/pictures/PictureArea.h"
#include "hosts/command/sheet/Canvas.h"
#include "hosts/command/sheet/SheetLayout.h"
#include "hosts/command/terminal/Interrupt.h"
#include "velorn.hpp"

#include <filesystem>
#include <optional>
#include <vector>

namespace velorn {

/// One picture that lets a person choose among the kernels found for a picture: an overview, a
/// detail of it at full size, and for each kernel its shape, its figures, and the detail as a
/// restoration with automatic settings shows it.
class CandidateSheet {
public:
    /// All arguments outlive the object.
    /// @param path name of the picture, in the sheet and in messages
    /// @param threads largest number of threads; 0: one for each processor
    /// @param look part of the picture as displayed that the detail belongs to; nothing: anywhere
    CandidateSheet(const ImageFile& picture, const std::filesystem::path& path,
                   const std::optional<PictureArea>& look, int threads, const Interrupt& interrupt);

    /// @param found    for the picture as stored; their numbers on the sheet begin with 1
    /// @throws Failure that names the picture, Interrupted
    ImageFile draw(const std::vector<api::FoundKernel>& found, const api::Progress& progress) const;

private:
    /// The whole picture as displayed, reduced to the size of a detail.
    RgbPixels overview() const;
    /// Draws the overview with a frame around the detail.
    void drawOverview(Canvas& canvas, const SheetLayout& layout, const RgbPixels& reduced) const;

    const ImageFile& m_picture;
    const std::filesystem::path& m_path;
    int m_threads;
    const Interrupt& m_interrupt;
    PictureArea m_detail; ///< in the stored picture
};

} // namespace velorn
