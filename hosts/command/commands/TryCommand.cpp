#include "hosts/command/commands/TryCommand.h"

#include "hosts/command/arguments/shellWord.h"
#include "hosts/command/commands/encodedPicture.h"
#include "hosts/command/commands/KernelSearch.h"
#include "hosts/command/commands/shownProgress.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/OutputFile.h"
#include "hosts/command/files/standardStreams.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/kernels/kernelText.h"
#include "hosts/command/options/FormatOption.h"
#include "hosts/command/pictures/Orientation.h"
#include "hosts/command/sheet/detailArea.h"
#include "hosts/command/sheet/shownPart.h"
#include "hosts/command/terminal/slicedProgress.h"
#include "hosts/command/trial/TrialLayout.h"
#include "hosts/command/trial/trialSheet.h"

#include <sstream>
#include <utility>

namespace velorn {
namespace {

/// The part of the progress that a search takes.
constexpr double kSearchBeforeTrial = 0.5;

/// The kernels of blurs that are known, for the picture as displayed; nothing for a search.
std::vector<BlurKernel> knownKernels(const std::vector<TriedBlur>& blurs) {
    std::vector<BlurKernel> kernels;
    for (const TriedBlur& blur : blurs) {
        if (const auto* analytic = std::get_if<AnalyticBlur>(&blur.kernel)) {
            kernels.push_back(makeKernel(*analytic));
        } else if (const auto* file = std::get_if<KernelPath>(&blur.kernel)) {
            kernels.push_back(KernelFile::read(file->path, file->scale));
        }
    }
    return kernels;
}

/// A trial of one picture.
class Trial {
public:
    /// All arguments outlive the object.
    Trial(const ImageFile& picture, const TryOptions& options, const Interrupt& interrupt)
        : m_picture(picture), m_options(options), m_name(shownInput(options.input)),
          m_interrupt(interrupt) {}

    /// The blurs of known kernels.
    std::vector<TrialBlur> known(const std::vector<BlurKernel>& kernels) const {
        std::vector<TrialBlur> blurs;
        for (std::size_t i = 0; i < kernels.size(); ++i) {
            blurs.push_back({libraryKernel(asStored(kernels[i], m_picture.orientation())),
                             m_options.blurs[i].words,
                             {}});
        }
        return blurs;
    }

    /// Finds the kernels of the picture: all candidates, or the chosen one if strengths are tried.
    std::vector<TrialBlur> found(const api::Progress& progress, std::ostream& warnings) const {
        const TriedBlur& search = m_options.blurs.front();
        const auto& settings = std::get<BlindSettings>(search.kernel);
        const auto candidates = findKernels(m_picture, m_name, settings, m_interrupt, progress);
        const auto chosen = chosenKernel(candidates, m_name, settings, warnings);
        if (!m_options.strengths.empty()) {
            return {{chosen.kernel, search.words, remarkOn(chosen)}};
        }
        std::vector<TrialBlur> blurs;
        for (std::size_t i = 0; i < candidates.size(); ++i) {
            blurs.push_back({candidates[i].kernel,
                             search.words + " --candidate " + std::to_string(i + 1),
                             remarkOn(candidates[i])});
        }
        return blurs;
    }

    /// The part to restore, as displayed.
    /// @throws Failure when the region is not inside of the picture
    PictureArea shownRegion(int tiles) const {
        const int orientation = m_picture.orientation();
        const KernelSize shown = asStored(KernelSize{m_picture.width(), m_picture.height()},
                                          Orientation::inverse(orientation));
        if (m_options.region) {
            const PictureArea& region = *m_options.region;
            if (!region.isInside(shown.width, shown.height)) {
                throw failureIn(m_name, "--region " + region.text() +
                                            " is not inside of the picture, which is " +
                                            shown.text() + " pixels");
            }
            return region;
        }
        const KernelSize sides = asStored(TrialLayout::usualSides(tiles + 1), orientation);
        const PictureArea all{0, 0, m_picture.width(), m_picture.height()};
        return asShown(detailArea(m_picture, all, sides.width, sides.height, m_interrupt),
                       orientation, shown.width, shown.height);
    }

private:
    std::string remarkOn(const api::FoundKernel& found) const {
        const int orientation = m_picture.orientation();
        return blurText(found.report, asShown(blurKernelOf(found.kernel), orientation),
                        orientation) +
               ", confidence " + percentText(found.report.confidence);
    }

    const ImageFile& m_picture;
    const TryOptions& m_options;
    const std::filesystem::path m_name;
    const Interrupt& m_interrupt;
};

/// A restored region and the tiles that show it.
struct TrialResult {
    PictureArea region; ///< as displayed
    PictureArea stored;
    std::vector<TrialTile> tiles;
};

TrialResult restoredTiles(const ImageFile& picture, const std::vector<BlurKernel>& kernels,
                          const TryOptions& options, const Interrupt& interrupt,
                          const api::Progress& progress, std::ostream& warnings) {
    const Trial trial(picture, options, interrupt);
    const bool isSearch = kernels.empty();
    const double searched = isSearch ? kSearchBeforeTrial : 0.0;
    const auto blurs = isSearch ? trial.found(slicedProgress(progress, 0.0, searched), warnings)
                                : trial.known(kernels);
    const auto strengths =
        options.strengths.empty() ? std::vector<TrialStrength>{TrialStrength{}} : options.strengths;
    TrialResult result;
    result.region = trial.shownRegion(static_cast<int>(blurs.size() * strengths.size()));
    result.stored =
        asStored(result.region, picture.orientation(), picture.width(), picture.height());
    const std::filesystem::path name = shownInput(options.input);
    const TrialSeries series(picture, name, result.stored, options.settings, interrupt);
    result.tiles = series.restored(blurs, strengths, slicedProgress(progress, searched, 1.0));
    return result;
}

ImageFile drawnSheet(const ImageFile& picture, const TryOptions& options, const TrialResult& result,
                     const Interrupt& interrupt) {
    const std::string caption = shownInput(options.input).filename().string() + ", region " +
                                result.region.text() +
                                ", at full size. To restore the picture as tile N shows it: "
                                "velorn deblur IN OUT, and the options below the tile.";
    const RgbPixels pixels =
        trialSheet(shownPart(picture, result.stored, 1, interrupt), result.tiles, caption);
    ImageFile sheet(pixels.width, pixels.height, 3, 8);
    sheet.setRgb(pixels);
    if (!picture.isGrey()) {
        sheet.setProfile(picture.profile());
    }
    return sheet;
}

/// The name of a file as a word of a command line that is not an option.
std::string fileWord(const std::filesystem::path& path) {
    const std::string name = path.string();
    return shellWord(name.starts_with("-") && !isStandardStream(path) ? "./" + name : name);
}

void print(const TryOptions& options, const TrialResult& result, std::ostream& out) {
    out << "region:  " << result.region.text() << '\n';
    std::size_t number = 0;
    for (const TrialTile& tile : result.tiles) {
        out << "tile " << ++number << ":  velorn deblur " << fileWord(options.input) << " OUT "
            << tile.words << (tile.remark.empty() ? "" : "  # " + tile.remark) << '\n';
    }
    out << std::flush;
}

} // namespace

void runTry(const TryOptions& options, const Interrupt& interrupt, std::ostream& out,
            std::ostream& terminal, bool isTerminal) {
    outputFormat(options.sheet, options.format);
    const std::vector<BlurKernel> kernels = knownKernels(options.blurs);
    const ImageFile picture = ImageFile::read(options.input, options.maxPixels);
    OutputFile target(options.sheet);
    interrupt.check();

    std::ostringstream warnings; // the bar has the line of the terminal to itself
    const TrialResult result = [&] {
        ProgressBar bar(terminal, isTerminal);
        return restoredTiles(picture, kernels, options, interrupt, shownProgress(bar, interrupt),
                             warnings);
    }();
    terminal << warnings.str();
    target.write(encodedPicture(drawnSheet(picture, options, result, interrupt), options.sheet,
                                options.format));
    interrupt.check();
    target.commit();
    print(options, result, isStandardStream(options.sheet) ? terminal : out);
}

} // namespace velorn
