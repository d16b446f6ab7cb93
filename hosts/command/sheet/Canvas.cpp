#include "hosts/command/sheet/Canvas.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <sstream>
#include <vector>

namespace velorn {
namespace {

constexpr int kFont = cv::FONT_HERSHEY_SIMPLEX;
/// The height of a capital letter of this font at scale 1.
constexpr double kFontCapital = 21.0;
/// Text is drawn so many times larger and reduced, which smooths it.
constexpr int kOversampling = 4;

cv::Scalar scalarOf(Colour colour) {
    return {static_cast<double>(colour.red), static_cast<double>(colour.green),
            static_cast<double>(colour.blue)};
}

double fontScale(int capital) {
    return kOversampling * capital / kFontCapital;
}

/// Of a stroke, enlarged.
int thickness(int capital) {
    return std::max(kOversampling * capital / 8, 1);
}

std::string asciiOf(std::string text) {
    // Continuations of a character in UTF-8 have the bits 10xxxxxx.
    std::erase_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; });
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < 32 || c > 126 || c < 0; }, '?');
    return text;
}

/// Width of a hyphen and the space around it, before the text is reduced. Two hyphens of the font
/// itself look like one dash.
int hyphenWidth(int capital) {
    return kOversampling * capital * 5 / 8;
}

/// Calls `part(text)` for what lies between hyphens, and `hyphen()` for each of them.
template <class Part, class Hyphen>
void forEachPart(const std::string& text, const Part& part, const Hyphen& hyphen) {
    std::size_t begin = 0;
    for (;;) {
        const std::size_t end = text.find('-', begin);
        if (begin < std::min(end, text.size())) {
            part(text.substr(begin, end - begin));
        }
        if (end == std::string::npos) {
            return;
        }
        hyphen();
        begin = end + 1;
    }
}

/// The width of text without hyphens, enlarged.
int plainWidth(const std::string& text, int capital) {
    int baseline = 0;
    return cv::getTextSize(text, kFont, fontScale(capital), thickness(capital), &baseline).width;
}

/// Draws a line of text, white on black.
/// @param bottom of capital letters
void drawLine(cv::Mat& large, const std::string& text, int bottom, int capital) {
    int x = 0;
    forEachPart(
        text,
        [&](const std::string& part) {
            cv::putText(large, part, {x, bottom}, kFont, fontScale(capital), cv::Scalar(255),
                        thickness(capital), cv::LINE_AA);
            x += plainWidth(part, capital);
        },
        [&] {
            const int width = hyphenWidth(capital);
            const int y = bottom - kOversampling * capital * 3 / 7;
            cv::line(large, {x + width / 4, y}, {x + width * 3 / 4, y}, cv::Scalar(255),
                     thickness(capital), cv::LINE_AA);
            x += width;
        });
}

cv::Rect inside(const cv::Mat& pixels, const cv::Rect& area) {
    return area & cv::Rect(0, 0, pixels.cols, pixels.rows);
}

} // namespace

Canvas::Canvas(int width, int height, Colour background)
    : m_pixels(height, width, CV_8UC3, scalarOf(background)) {}

void Canvas::paste(const RgbPixels& pixels, int x, int y) {
    const auto& samples = std::get<std::vector<std::uint8_t>>(pixels.samples);
    const cv::Mat source(pixels.height, pixels.width, CV_8UC3,
                         const_cast<std::uint8_t*>(samples.data()));
    const cv::Rect area = inside(m_pixels, {x, y, pixels.width, pixels.height});
    if (!area.empty()) {
        source(area - cv::Point(x, y)).copyTo(m_pixels(area));
    }
}

void Canvas::fill(int x, int y, int width, int height, Colour colour) {
    m_pixels(inside(m_pixels, {x, y, width, height})).setTo(scalarOf(colour));
}

void Canvas::frame(int x, int y, int width, int height, Colour colour) {
    fill(x, y, width, 1, colour);
    fill(x, y + height - 1, width, 1, colour);
    fill(x, y, 1, height, colour);
    fill(x + width - 1, y, 1, height, colour);
}

int Canvas::textWidth(const std::string& text, int capital) {
    int width = 0;
    forEachPart(
        asciiOf(text), [&](const std::string& part) { width += plainWidth(part, capital); },
        [&] { width += hyphenWidth(capital); });
    return (width + kOversampling - 1) / kOversampling;
}

void Canvas::write(const std::string& text, int x, int y, int capital, Colour colour) {
    // Room above capitals for brackets, and below for descenders.
    const int above = capital / 2;
    const cv::Size size(textWidth(text, capital) + 2, 2 * capital + above);
    cv::Mat large = cv::Mat::zeros(size * kOversampling, CV_8U);
    drawLine(large, asciiOf(text), kOversampling * (above + capital), capital);
    cv::Mat cover;
    cv::resize(large, cover, size, 0.0, 0.0, cv::INTER_AREA);
    const std::uint8_t ink[] = {colour.red, colour.green, colour.blue};
    const cv::Rect area = inside(m_pixels, {x, y - above, size.width, size.height});
    for (int r = area.y; r < area.y + area.height; ++r) {
        for (int c = area.x; c < area.x + area.width; ++c) {
            const int share = cover.at<std::uint8_t>(r - (y - above), c - x);
            auto& pixel = m_pixels.at<cv::Vec3b>(r, c);
            for (int i = 0; i < 3; ++i) {
                pixel[i] = static_cast<std::uint8_t>(
                    (pixel[i] * (255 - share) + ink[i] * share + 127) / 255);
            }
        }
    }
}

int Canvas::writeWrapped(const std::string& text, int x, int y, int width, int capital,
                         Colour colour) {
    std::istringstream words(text);
    std::string line;
    for (std::string word; words >> word;) {
        const std::string longer = line.empty() ? word : line + " " + word;
        if (!line.empty() && textWidth(longer, capital) > width) {
            write(line, x, y, capital, colour);
            y += 2 * capital;
            line = word;
        } else {
            line = longer;
        }
    }
    write(line, x, y, capital, colour);
    return y + 2 * capital;
}

RgbPixels Canvas::pixels() const {
    RgbPixels result{width(), height(), {}};
    result.samples = std::vector<std::uint8_t>(m_pixels.datastart, m_pixels.dataend);
    return result;
}

} // namespace velorn
