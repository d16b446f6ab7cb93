#include "hosts/command/commands/KernelSearch.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/kernels/kernelText.h"
#include "hosts/command/library/callLibrary.h"
#include "hosts/command/pictures/Orientation.h"

#include <optional>

namespace velorn {
namespace {

/// Below this confidence a restoration does harm more often than not.
constexpr float kUncertain = 0.5f;
/// Below this likeness the kernels of different parts are different blurs: it was 0.77 and more in
/// pictures of one blur (docs/blind-restoration.md).
constexpr float kSameBlur = 0.7f;

/// Above this misfit, a multiple of the noise, the kernel explains the picture badly. Right kernels
/// had up to 3.6 in pictures without compression and 4.7 in JPEG files of quality 75
/// (docs/blind-restoration.md).
constexpr float kLargestMisfit = 8.0f;

VelornRegion storedRegion(const PictureArea& look, const ImageFile& picture,
                          const std::filesystem::path& path) {
    const int orientation = picture.orientation();
    const KernelSize shown =
        asStored(KernelSize{picture.width(), picture.height()}, Orientation::inverse(orientation));
    if (!look.isInside(shown.width, shown.height)) {
        throw failureIn(path, "--look " + look.text() + " is not inside of the picture, which is " +
                                  shown.text() + " pixels");
    }
    const PictureArea area = asStored(look, orientation, picture.width(), picture.height());
    return {area.x, area.y, area.width, area.height};
}

/// The settings of a search in a picture, with the kernel that they refer to.
class Search {
public:
    /// @throws Failure that names `path`, or the file of the kernel to refine
    Search(const BlindSettings& settings, const ImageFile& picture,
           const std::filesystem::path& path) {
        if (settings.largest) {
            const KernelSize stored = asStored(*settings.largest, picture.orientation());
            m_settings.maxWidth = stored.width;
            m_settings.maxHeight = stored.height;
        }
        if (settings.look) {
            m_settings.region = storedRegion(*settings.look, picture, path);
        }
        if (settings.start) {
            const BlurKernel shown = KernelFile::read(*settings.start, std::nullopt);
            m_start = libraryKernel(asStored(shown, picture.orientation()));
            m_settings.start = m_start->get();
        }
        m_settings.smoothing = settings.smoothing;
        m_settings.threads = settings.threads;
    }

    /// Refers to this object.
    const VelornFindSettings& settings() const { return m_settings; }

private:
    VelornFindSettings m_settings = api::findSettings();
    std::optional<api::Kernel> m_start;
};

api::KernelGrid rotatedBy180(const api::KernelGrid& grid) {
    std::vector<api::Kernel> kernels;
    for (int row = 0; row < grid.rows(); ++row) {
        for (int column = 0; column < grid.columns(); ++column) {
            kernels.push_back(grid.at(column, row).rotatedBy180());
        }
    }
    return api::KernelGrid::of(kernels, grid.columns(), grid.rows());
}

/// What is wrong with a restoration with the kernel; nothing if it is fine.
std::optional<std::string> doubtAbout(const VelornFindReport& report) {
    if (report.kind == VELORN_KIND_NONE) {
        return "the picture does not look blurred";
    }
    if (report.confidence < kUncertain) {
        return "the kernel found is uncertain (confidence " + percentText(report.confidence) + ")";
    }
    return std::nullopt;
}

void warn(std::ostream& terminal, const std::filesystem::path& path, const std::string& text) {
    terminal << "velorn: warning: " << quoted(path) << ": " << text << '\n';
}

[[noreturn]] void refuse(const std::filesystem::path& path, const std::string& reason) {
    throw failureIn(path, reason + "; nothing is written because of --strict");
}

/// Warns when a restoration with the kernel may be worse than the picture.
/// @throws Failure instead when the settings are strict
void checkConfidence(const VelornFindReport& report, const std::filesystem::path& path,
                     const BlindSettings& settings, std::ostream& terminal) {
    const auto doubt = doubtAbout(report);
    if (doubt && settings.isStrict) {
        refuse(path, *doubt);
    }
    if (settings.isStrict && report.misfit > kLargestMisfit * kLargestMisfit) {
        refuse(path,
               "the kernel found explains the picture badly (misfit " + misfitText(report) + ")");
    }
    if (report.kind == VELORN_KIND_NONE) {
        warn(terminal, path, *doubt + " and is not restored");
    } else if (doubt) {
        warn(terminal, path,
             *doubt + ": the result may be worse than the picture; see the "
                      "candidates with 'velorn estimate --sheet'");
    }
}

/// Warns when one kernel cannot fit all of the picture. `advice` ends the warning.
/// @throws Failure instead when the settings are strict
void checkParts(const VelornFindReport& report, const std::filesystem::path& path,
                const BlindSettings& settings, const std::string& advice, std::ostream& terminal) {
    if (report.parts > 1 && report.partAgreement < kSameBlur) {
        const std::string text =
            "the blur differs across the picture: no kernel fits all of it" + advice;
        if (settings.isStrict) {
            refuse(path, text);
        }
        warn(terminal, path, text);
    }
}

} // namespace

std::vector<api::FoundKernel> findKernels(const ImageFile& picture,
                                          const std::filesystem::path& path,
                                          const BlindSettings& settings, const Interrupt& interrupt,
                                          const api::Progress& progress) {
    const Search search(settings, picture, path);
    std::vector<api::FoundKernel> found = callLibrary(path, interrupt, [&] {
        return api::findCandidates(picture.view(), search.settings(), progress);
    });
    if (settings.turn == Turn::Yes) {
        for (api::FoundKernel& candidate : found) {
            candidate.kernel = candidate.kernel.rotatedBy180();
        }
    }
    return found;
}

api::FoundKernelGrid findLocalKernels(const ImageFile& picture, const std::filesystem::path& path,
                                      const BlindSettings& settings, const Interrupt& interrupt,
                                      const api::Progress& progress) {
    const Search search(settings, picture, path);
    api::FoundKernelGrid found = callLibrary(path, interrupt, [&] {
        return api::findKernelGrid(picture.view(), search.settings(), progress);
    });
    if (settings.turn == Turn::Yes) {
        found.grid = rotatedBy180(found.grid);
    }
    return found;
}

api::FoundKernel chosenKernel(const std::vector<api::FoundKernel>& found,
                              const std::filesystem::path& path, const BlindSettings& settings,
                              std::ostream& terminal) {
    const auto index = static_cast<std::size_t>(settings.candidate - 1);
    if (index >= found.size()) {
        throw failureIn(path, "there is no candidate " + std::to_string(settings.candidate) +
                                  ": the search has found " + std::to_string(found.size()));
    }
    const api::FoundKernel& chosen = found[index];
    checkConfidence(chosen.report, path, settings, terminal);
    checkParts(chosen.report, path, settings, "; try --local with 'velorn deblur --blind'",
               terminal);
    return chosen;
}

bool isLocal(const api::KernelGrid& grid) {
    return grid.columns() > 1 || grid.rows() > 1;
}

void checkLocalKernels(const api::FoundKernelGrid& found, const std::filesystem::path& path,
                       const BlindSettings& settings, std::ostream& terminal) {
    checkConfidence(found.report, path, settings, terminal);
    if (!isLocal(found.grid)) {
        checkParts(found.report, path, settings, "", terminal);
    }
}

} // namespace velorn
