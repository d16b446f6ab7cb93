#pragma once

#include "hosts/command/pictures/RgbPixels.h"

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>

namespace velorn {

struct Colour {
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};

/// An 8-bit colour picture to draw on. What lies outside of it is not drawn.
class Canvas {
public:
    Canvas(int width, int height, Colour background);

    int width() const { return m_pixels.cols; }
    int height() const { return m_pixels.rows; }

    /// Copies 8-bit pixels; their top left one comes to (x, y).
    void paste(const RgbPixels& pixels, int x, int y);
    void fill(int x, int y, int width, int height, Colour colour);
    /// Draws a line of one pixel around the rectangle, inside of it.
    void frame(int x, int y, int width, int height, Colour colour);

    /// Writes a line of text. Characters other than ASCII become question marks.
    /// @param capital height of a capital letter in pixels
    /// @param y       its top
    void write(const std::string& text, int x, int y, int capital, Colour colour);
    /// The width of such a line.
    static int textWidth(const std::string& text, int capital);
    /// Writes text in lines of at most `width` pixels, unless a single word is wider.
    /// @return the top of the line that would follow
    int writeWrapped(const std::string& text, int x, int y, int width, int capital, Colour colour);

    RgbPixels pixels() const;

private:
    cv::Mat m_pixels; ///< red, green, blue
};

} // namespace velorn
