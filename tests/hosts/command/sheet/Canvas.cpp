#include "hosts/command/sheet/Canvas.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using velorn::Canvas;
using velorn::Colour;
using Bytes = std::vector<std::uint8_t>;

constexpr Colour kBlack{0, 0, 0};
constexpr Colour kWhite{255, 255, 255};

Bytes bytesOf(const Canvas& canvas) {
    return std::get<Bytes>(canvas.pixels().samples);
}

Colour at(const Canvas& canvas, int x, int y) {
    const Bytes bytes = bytesOf(canvas);
    const std::uint8_t* pixel = &bytes[canvas.pixels().sampleIndex(x, y)];
    return {pixel[0], pixel[1], pixel[2]};
}

/// The rows and columns that are not black.
struct Ink {
    int left = 1000;
    int right = -1;
    int top = 1000;
    int bottom = -1;

    explicit Ink(const Canvas& canvas) {
        for (int y = 0; y < canvas.height(); ++y) {
            for (int x = 0; x < canvas.width(); ++x) {
                // Smoothed rims are faint.
                if (at(canvas, x, y).green > 60) {
                    left = std::min(left, x);
                    right = std::max(right, x);
                    top = std::min(top, y);
                    bottom = std::max(bottom, y);
                }
            }
        }
    }
};

TEST(Canvas, PixelsKeepTheirColours) {
    Canvas canvas(8, 6, {1, 2, 3});
    canvas.paste({2, 1, Bytes{10, 20, 30, 40, 50, 60}}, 5, 4);
    EXPECT_EQ(at(canvas, 4, 4).red, 1);
    EXPECT_EQ(at(canvas, 5, 4).red, 10);
    EXPECT_EQ(at(canvas, 5, 4).blue, 30);
    EXPECT_EQ(at(canvas, 6, 4).green, 50);
}

TEST(Canvas, FrameSurroundsItsInside) {
    Canvas canvas(8, 6, kBlack);
    canvas.frame(1, 1, 5, 4, kWhite);
    const Bytes bytes = bytesOf(canvas);
    EXPECT_EQ(std::ranges::count(bytes, 255), 3 * 14);
    EXPECT_EQ(at(canvas, 5, 4).red, 255);
    EXPECT_EQ(at(canvas, 4, 3).red, 0);
}

TEST(Canvas, WhatLiesOutsideIsNotDrawn) {
    Canvas canvas(4, 4, kBlack);
    canvas.paste({2, 2, Bytes(12, 200)}, -1, 3);
    canvas.fill(3, -2, 9, 3, kWhite);
    canvas.paste({2, 2, Bytes(12, 200)}, 40, 40);
    canvas.write("outside", -300, 60, 10, kWhite);
    EXPECT_EQ(at(canvas, 0, 3).red, 200);
    EXPECT_EQ(at(canvas, 3, 0).red, 255);
    EXPECT_EQ(std::ranges::count(bytesOf(canvas), 0), 3 * 14);
}

TEST(Canvas, CapitalsHaveTheirHeightAndPlace) {
    Canvas canvas(60, 40, kBlack);
    canvas.write("HE", 10, 12, 14, kWhite);
    const Ink ink(canvas);
    EXPECT_NEAR(ink.top, 12, 1);
    EXPECT_NEAR(ink.bottom - ink.top + 1, 14, 3);
    EXPECT_GE(ink.left, 10);
    EXPECT_LE(ink.right, 10 + Canvas::textWidth("HE", 14));
}

TEST(Canvas, LinesBreakBetweenWords) {
    Canvas canvas(200, 120, kBlack);
    const int width = Canvas::textWidth("out of focus", 10);
    EXPECT_EQ(canvas.writeWrapped("out of focus radius", 0, 10, width, 10, kWhite), 10 + 2 * 20);
    EXPECT_LE(Ink(canvas).right, width);
    EXPECT_EQ(canvas.writeWrapped("", 0, 10, width, 10, kWhite), 30);
}

TEST(Canvas, CharactersBeyondAsciiBecomeQuestionMarks) {
    Canvas foreign(80, 40, kBlack);
    Canvas marks(80, 40, kBlack);
    foreign.write("\u00FC\u6771\n", 5, 10, 10, kWhite);
    marks.write("???", 5, 10, 10, kWhite);
    EXPECT_EQ(bytesOf(foreign), bytesOf(marks));
}

TEST(Canvas, HyphensAreApart) {
    const int capital = 14;
    const int width = Canvas::textWidth("--", capital);
    EXPECT_EQ(width, 2 * Canvas::textWidth("-", capital));
    Canvas canvas(width + 2, 3 * capital, {0, 0, 0});
    canvas.write("--", 0, capital, capital, {255, 255, 255});
    const auto samples = std::get<std::vector<std::uint8_t>>(canvas.pixels().samples);
    int strokes = 0;
    bool isInside = false;
    for (int x = 0; x < canvas.width(); ++x) {
        bool isDrawn = false;
        for (int y = 0; y < canvas.height(); ++y) {
            isDrawn |= samples[static_cast<std::size_t>(3 * (y * canvas.width() + x))] > 60;
        }
        strokes += isDrawn && !isInside ? 1 : 0;
        isInside = isDrawn;
    }
    EXPECT_EQ(strokes, 2);
}

} // namespace
