#include "hosts/command/sheet/CandidateSheet.h"

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/kernels/kernelText.h"
#include "hosts/command/pictures/Orientation.h"
#include "hosts/command/sheet/Canvas.h"
#include "hosts/command/sheet/detailArea.h"
#include "hosts/command/sheet/restoredPart.h"
#include "hosts/command/sheet/SheetLayout.h"
#include "hosts/command/sheet/shownPart.h"
#include "hosts/command/terminal/slicedProgress.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <string>

namespace velorn {
namespace {

constexpr int kDetailWidth = SheetLayout::kDetailWidth;
constexpr int kDetailHeight = SheetLayout::kDetailHeight;
constexpr int kKernelSide = SheetLayout::kKernelSide;
constexpr int kHeading = SheetLayout::kHeading;
constexpr int kText = SheetLayout::kText;

constexpr Colour kBackground{38, 38, 40};
constexpr Colour kInk{225, 225, 225};
constexpr Colour kFaint{150, 150, 155};
constexpr Colour kAccent{255, 190, 70};
constexpr Colour kBlack{0, 0, 0};

/// The cells before the candidates.
constexpr int kOverview = 0;
constexpr int kUnrestored = 1;
constexpr int kFirstCandidate = 2;

std::string scoreText(float score) {
    char digits[64];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, score, std::chars_format::fixed, 2).ptr;
    return {digits, end};
}

/// Draws the weights as squares, the largest one white, in a square of side `kKernelSide`.
void drawKernel(Canvas& canvas, const BlurKernel& kernel, int left, int top) {
    canvas.fill(left, top, kKernelSide, kKernelSide, kBlack);
    const int scale = std::max(kKernelSide / std::max(kernel.largerSide(), 5), 1);
    const int right = (kKernelSide - scale * kernel.width) / 2;
    const int down = (kKernelSide - scale * kernel.height) / 2;
    const float peak = std::ranges::max(kernel.weights);
    for (int r = 0; r < kernel.height; ++r) {
        for (int c = 0; c < kernel.width; ++c) {
            const float share = std::clamp(kernel.at(r, c) / peak, 0.0f, 1.0f);
            // Weights are light: the eye sees them through the display's curve.
            const auto level =
                static_cast<std::uint8_t>(std::lround(255.0f * std::pow(share, 1.0f / 2.2f)));
            canvas.fill(left + right + scale * c, top + down + scale * r, scale, scale,
                        {level, level, level});
        }
    }
}

/// Writes what is known about a kernel into the strip of its cell.
void describe(Canvas& canvas, const SheetLayout& layout, int cell, const api::FoundKernel& found,
              int orientation) {
    const BlurKernel shown = asShown(blurKernelOf(found.kernel), orientation);
    const int left = layout.left(cell) + kKernelSide + SheetLayout::kGap;
    const int width = layout.left(cell) + layout.width() - left;
    const int strip = layout.strip(cell);
    drawKernel(canvas, shown, layout.left(cell), strip);
    const std::string number = std::to_string(cell + 1 - kFirstCandidate);
    canvas.write(number, left, strip, kHeading, kAccent);
    canvas.write("confidence " + percentText(found.report.confidence),
                 left + Canvas::textWidth(number + "  ", kHeading), strip, kHeading, kInk);
    const int below = canvas.writeWrapped(blurText(found.report, shown, orientation), left,
                                          layout.text(cell), width, kText, kInk);
    canvas.writeWrapped("kernel " + shown.size().text() + ", score " +
                            scoreText(found.report.score),
                        left, below, width, kText, kFaint);
}

/// `pixels`, reduced to fit `width` by `height`, unless they do.
RgbPixels fitting(const RgbPixels& pixels, int width, int height) {
    const double scale = std::min({1.0, static_cast<double>(width) / pixels.width,
                                   static_cast<double>(height) / pixels.height});
    const cv::Mat source(
        pixels.height, pixels.width, CV_8UC3,
        const_cast<std::uint8_t*>(std::get<std::vector<std::uint8_t>>(pixels.samples).data()));
    cv::Mat reduced;
    const auto side = [scale](int whole) {
        return std::max(static_cast<int>(std::lround(scale * whole)), 1);
    };
    cv::resize(source, reduced, {side(pixels.width), side(pixels.height)}, 0.0, 0.0,
               cv::INTER_AREA);
    return {reduced.cols, reduced.rows,
            std::vector<std::uint8_t>(reduced.datastart, reduced.dataend)};
}

KernelSize shownSides(const ImageFile& picture) {
    return asStored(KernelSize{picture.width(), picture.height()},
                    Orientation::inverse(picture.orientation()));
}

} // namespace

CandidateSheet::CandidateSheet(const ImageFile& picture, const std::filesystem::path& path,
                               const std::optional<PictureArea>& look, int threads,
                               const Interrupt& interrupt)
    : m_picture(picture), m_path(path), m_threads(threads), m_interrupt(interrupt) {
    const int orientation = picture.orientation();
    const KernelSize sides = asStored(KernelSize{kDetailWidth, kDetailHeight}, orientation);
    const PictureArea within = look
                                   ? asStored(*look, orientation, picture.width(), picture.height())
                                   : PictureArea{0, 0, picture.width(), picture.height()};
    m_detail = detailArea(picture, within, sides.width, sides.height, interrupt);
}

ImageFile CandidateSheet::draw(const std::vector<api::FoundKernel>& found,
                               const api::Progress& progress) const {
    const RgbPixels detail = shownPart(m_picture, m_detail, 1, m_interrupt);
    const RgbPixels reduced = overview();
    const int count = static_cast<int>(found.size());
    const SheetLayout layout(detail.width, std::max(detail.height, reduced.height),
                             kFirstCandidate + count);
    Canvas canvas(layout.sheetWidth(), layout.sheetHeight(), kBackground);
    drawOverview(canvas, layout, reduced);
    canvas.paste(detail, layout.left(kUnrestored), layout.top(kUnrestored));
    canvas.write("as it is", layout.left(kUnrestored), layout.strip(kUnrestored), kHeading, kInk);
    VelornRestoreSettings settings = api::restoreSettings();
    settings.threads = m_threads;
    for (int i = 0; i < count; ++i) {
        const api::FoundKernel& candidate = found[static_cast<std::size_t>(i)];
        const auto share = slicedProgress(progress, static_cast<double>(i) / count,
                                          static_cast<double>(i + 1) / count);
        const int cell = kFirstCandidate + i;
        const RestoredPart part = restoredPart(m_picture, m_path, m_detail, candidate.kernel,
                                               settings, m_interrupt, share);
        canvas.paste(part.pixels, layout.left(cell), layout.top(cell));
        describe(canvas, layout, cell, candidate, m_picture.orientation());
    }
    canvas.write("To restore the picture with candidate N: velorn deblur IN OUT --blind "
                 "--candidate N",
                 SheetLayout::kMargin, canvas.height() - SheetLayout::kMargin, kText, kFaint);
    ImageFile sheet(canvas.width(), canvas.height(), 3, 8);
    sheet.setRgb(canvas.pixels());
    return sheet;
}

void CandidateSheet::drawOverview(Canvas& canvas, const SheetLayout& layout,
                                  const RgbPixels& reduced) const {
    const int left = layout.left(kOverview);
    const int top = layout.top(kOverview);
    canvas.paste(reduced, left, top);
    const KernelSize sides = shownSides(m_picture);
    const PictureArea place = asShown(m_detail, m_picture.orientation(), sides.width, sides.height);
    const double scale = static_cast<double>(reduced.width) / sides.width;
    const auto reducedBy = [scale](int length) { return static_cast<int>(scale * length); };
    canvas.frame(left + reducedBy(place.x), top + reducedBy(place.y), reducedBy(place.width),
                 reducedBy(place.height), kAccent);
    canvas.write(m_path.filename().string(), left, layout.strip(kOverview), kHeading, kInk);
    canvas.writeWrapped(sides.text() + " pixels; the frame shows the detail", left,
                        layout.text(kOverview), layout.width(), kText, kFaint);
}

RgbPixels CandidateSheet::overview() const {
    const KernelSize sides =
        asStored(KernelSize{kDetailWidth, kDetailHeight}, m_picture.orientation());
    const int step = std::max(
        std::min(m_picture.width() / (2 * sides.width), m_picture.height() / (2 * sides.height)),
        1);
    const PictureArea all{0, 0, m_picture.width(), m_picture.height()};
    return fitting(shownPart(m_picture, all, step, m_interrupt), kDetailWidth, kDetailHeight);
}

} // namespace velorn
