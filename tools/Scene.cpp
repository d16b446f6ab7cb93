#include "Scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <opencv2/imgproc.hpp>
#include <random>
#include <string>
#include <vector>

namespace velorn::tools {
namespace {

/// The scene is drawn this many times larger than the result.
constexpr int kOversampling = 2;
/// The layout is made for this frame and scaled to the requested one.
constexpr double kFrameWidth = 1024.0;
constexpr double kFrameHeight = 768.0;

struct Colour {
    double red;
    double green;
    double blue;
};

Colour operator*(const Colour& colour, double factor) {
    return {colour.red * factor, colour.green * factor, colour.blue * factor};
}

Colour between(const Colour& from, const Colour& to, double share) {
    return {from.red + (to.red - from.red) * share, from.green + (to.green - from.green) * share,
            from.blue + (to.blue - from.blue) * share};
}

/// Random numbers that are the same on every system: the standard library's generators are
/// portable, its distributions are not.
class Chance {
public:
    explicit Chance(std::uint32_t seed) : m_generator(seed) {}
    double between(double low, double high) {
        return low + (high - low) * static_cast<double>(m_generator()) / 4294967296.0;
    }

private:
    std::mt19937 m_generator;
};

/// Smooth noise of several octaves, -1..1, a function of the position only.
class Clouds {
public:
    explicit Clouds(std::uint32_t seed) : m_seed(seed) {}

    double at(double x, double y, int octaves) const {
        double sum = 0.0;
        double weight = 0.5;
        for (int octave = 0; octave < octaves; ++octave) {
            sum += weight * lattice(x, y, static_cast<std::uint32_t>(octave));
            x *= 2.03;
            y *= 2.03;
            weight *= 0.5;
        }
        return sum;
    }

private:
    double corner(int x, int y, std::uint32_t octave) const {
        std::uint32_t h = static_cast<std::uint32_t>(x) * 0x8DA6B343u ^
                          static_cast<std::uint32_t>(y) * 0xD8163841u ^ octave * 0xCB1AB31Fu ^
                          m_seed;
        h ^= h >> 15;
        h *= 0x2C1B3C6Du;
        h ^= h >> 12;
        h *= 0x297A2D39u;
        h ^= h >> 15;
        return static_cast<double>(h) / 2147483648.0 - 1.0;
    }

    double lattice(double x, double y, std::uint32_t octave) const {
        const int left = static_cast<int>(std::floor(x));
        const int top = static_cast<int>(std::floor(y));
        const auto smooth = [](double t) { return t * t * (3.0 - 2.0 * t); };
        const double u = smooth(x - left);
        const double v = smooth(y - top);
        const double upper = std::lerp(corner(left, top, octave), corner(left + 1, top, octave), u);
        const double lower =
            std::lerp(corner(left, top + 1, octave), corner(left + 1, top + 1, octave), u);
        return std::lerp(upper, lower, v);
    }

    std::uint32_t m_seed;
};

/// The drawing, addressed in the coordinates of the frame.
class Painter {
public:
    Painter(int width, int height, int margin, std::uint32_t seed)
        : m_chance(seed), m_clouds(seed * 2654435761u), m_unit(kOversampling * width / kFrameWidth),
          m_unitDown(kOversampling * height / kFrameHeight), m_margin(margin * kOversampling),
          m_canvas((height + 2 * margin) * kOversampling, (width + 2 * margin) * kOversampling,
                   CV_8UC3) {}

    cv::Mat paint() {
        sky();
        hills();
        lawn();
        pavement();
        house();
        shop();
        notice();
        tree(905, 330, 150);
        tree(70, 400, 95);
        railing();
        wires();
        balls();
        grain();
        return m_canvas;
    }

private:
    cv::Point2d place(double x, double y) const {
        return {x * m_unit + m_margin, y * m_unitDown + m_margin};
    }
    /// A point for OpenCV's drawing calls, which take 16ths of a pixel.
    cv::Point fine(double x, double y) const {
        const cv::Point2d at = place(x, y) * 16.0;
        return {static_cast<int>(std::lround(at.x)), static_cast<int>(std::lround(at.y))};
    }
    static constexpr int kFineBits = 4;

    static cv::Scalar scalar(const Colour& colour) {
        return {colour.red, colour.green, colour.blue};
    }
    int thickness(double width) const {
        return std::max(1, static_cast<int>(std::lround(width * m_unit)));
    }

    void line(double x0, double y0, double x1, double y1, const Colour& colour, double width) {
        cv::line(m_canvas, fine(x0, y0), fine(x1, y1), scalar(colour), thickness(width),
                 cv::LINE_AA, kFineBits);
    }
    void polygon(const std::vector<std::pair<double, double>>& corners, const Colour& colour) {
        std::vector<cv::Point> points;
        for (const auto& [x, y] : corners) {
            points.push_back(fine(x, y));
        }
        cv::fillConvexPoly(m_canvas, points, scalar(colour), cv::LINE_AA, kFineBits);
    }
    void box(double x, double y, double width, double height, const Colour& colour) {
        polygon({{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}}, colour);
    }
    void ellipse(double x, double y, double halfWidth, double halfHeight, double angle,
                 const Colour& colour) {
        const cv::Size axes(static_cast<int>(std::lround(halfWidth * m_unit * 16.0)),
                            static_cast<int>(std::lround(halfHeight * m_unitDown * 16.0)));
        cv::ellipse(m_canvas, fine(x, y), axes, angle, 0.0, 360.0, scalar(colour), cv::FILLED,
                    cv::LINE_AA, kFineBits);
    }
    void text(const std::string& words, double x, double y, int font, double size, double width,
              const Colour& colour) {
        const cv::Point2d at = place(x, y);
        cv::putText(m_canvas, words, {static_cast<int>(at.x), static_cast<int>(at.y)}, font,
                    size * m_unit, scalar(colour), thickness(width), cv::LINE_AA);
    }

    /// Sets every pixel of a rectangle to `shade` of its position in the frame.
    template <class Shade>
    void fill(double x, double y, double width, double height, Shade&& shade) {
        const cv::Point2d from = place(x, y);
        const cv::Point2d to = place(x + width, y + height);
        const cv::Rect area =
            cv::Rect(cv::Point(static_cast<int>(from.x), static_cast<int>(from.y)),
                     cv::Point(static_cast<int>(to.x), static_cast<int>(to.y))) &
            cv::Rect(0, 0, m_canvas.cols, m_canvas.rows);
        for (int row = area.y; row < area.y + area.height; ++row) {
            for (int column = area.x; column < area.x + area.width; ++column) {
                const Colour colour =
                    shade((column - m_margin) / m_unit, (row - m_margin) / m_unitDown);
                m_canvas.at<cv::Vec3b>(row, column) = {cv::saturate_cast<uchar>(colour.red),
                                                       cv::saturate_cast<uchar>(colour.green),
                                                       cv::saturate_cast<uchar>(colour.blue)};
            }
        }
    }

    void sky() {
        fill(-100, -100, kFrameWidth + 200, kFrameHeight + 200, [this](double x, double y) {
            const Colour clear =
                between({86, 134, 196}, {196, 214, 228}, std::clamp(y / 420, 0., 1.));
            const double cloud = m_clouds.at(x / 210, y / 90 + 3, 6) * 1.7 - 0.05;
            return between(clear, {244, 243, 240}, std::clamp(cloud, 0.0, 0.9));
        });
    }

    void hills() {
        fill(-100, 300, kFrameWidth + 200, 200, [this](double x, double y) {
            const double ridge = 372 + 46 * m_clouds.at(x / 260, 7.3, 4);
            const double leaves = m_clouds.at(x / 5, y / 4, 4);
            const Colour wood = between({74, 96, 88}, {116, 134, 108}, 0.5 + leaves);
            const auto row = m_canvas.at<cv::Vec3b>(
                std::clamp(static_cast<int>(y * m_unitDown + m_margin), 0, m_canvas.rows - 1),
                std::clamp(static_cast<int>(x * m_unit + m_margin), 0, m_canvas.cols - 1));
            const Colour behind{double(row[0]), double(row[1]), double(row[2])};
            return y > ridge + 6 * m_clouds.at(x / 9, 1.7, 3) ? wood : behind;
        });
    }

    void lawn() {
        fill(-100, 498, kFrameWidth + 200, 110, [this](double x, double y) {
            const double edge = 508 + 5 * m_clouds.at(x / 14, 9.1, 4);
            if (y < edge) {
                return between({48, 68, 40}, {92, 116, 62}, 0.5 + m_clouds.at(x / 4, y / 3, 4));
            }
            const double blades = m_clouds.at(x / 1.3, y / 5.0, 3);
            const double patches = m_clouds.at(x / 40, y / 16, 3);
            return between({62, 92, 38}, {148, 172, 78}, 0.5 + 0.7 * blades + 0.4 * patches);
        });
    }

    void pavement() {
        fill(-100, 590, kFrameWidth + 200, 300, [this](double x, double y) {
            // Stones in perspective: rows grow towards the viewer.
            const double depth = 60.0 / (y - 560.0);
            const double across = (x - 512.0) * depth / 9.0 + 400.0;
            const double along = 90.0 * depth;
            const double shift = std::fmod(std::floor(along), 2.0) * 0.5;
            const double u = across + shift - std::floor(across + shift);
            const double v = along - std::floor(along);
            const double joint = std::min(std::min(u, 1.0 - u) * 0.8, std::min(v, 1.0 - v));
            const double stone =
                m_clouds.at(std::floor(across + shift) * 3.1, std::floor(along) * 5.7, 1);
            const double rough = m_clouds.at(x / 2.2, y / 1.5, 3);
            const double level = (joint < 0.07 ? 82.0 : 136.0 + 26.0 * stone) + 30.0 * rough;
            return Colour{level * 1.02, level * 0.98, level * 0.92};
        });
    }

    Colour brick(double x, double y) const {
        constexpr double kHigh = 9.0;
        constexpr double kWide = 25.0;
        const double course = std::floor(y / kHigh);
        const double shifted = x / kWide + (std::fmod(course, 2.0) == 0.0 ? 0.0 : 0.5);
        const double u = (shifted - std::floor(shifted)) * kWide;
        const double v = y - course * kHigh;
        const double grain = m_clouds.at(x / 1.7, y / 1.7, 3);
        if (u < 1.6 || v < 1.6) {
            return Colour{186, 178, 164} * (0.94 + 0.2 * grain);
        }
        const double tone = m_clouds.at(std::floor(shifted) * 4.7, course * 3.3, 1);
        const double light = v > kHigh - 1.2 ? 0.86 : 1.0;
        return between({140, 66, 48}, {186, 100, 70}, 0.5 + 0.5 * tone) *
               (light * (1 + 0.28 * grain));
    }

    void house() {
        fill(210, 110, 520, 500, [this](double x, double y) { return brick(x, y); });
        // Roof with rows of tiles.
        for (int course = 0; course < 9; ++course) {
            const double y = 52 + course * 7.0;
            const double inset = 62 - course * 7.0;
            for (double x = 200 + inset; x < 740 - inset; x += 9.0) {
                const double tone = m_chance.between(0.75, 1.1);
                box(x + (course % 2) * 4.5, y, 8.2, 6.4, Colour{96, 74, 78} * tone);
            }
        }
        box(198, 112, 546, 8, {222, 216, 204});
        for (int column = 0; column < 4; ++column) {
            for (int row = 0; row < 2; ++row) {
                window(250.0 + column * 120.0, 150.0 + row * 125.0);
            }
        }
    }

    void window(double x, double y) {
        box(x - 6, y - 6, 82, 100, {226, 222, 212});
        fill(x, y, 70, 88, [&](double px, double py) {
            const double reflection = m_clouds.at(px / 60 + x, py / 40, 4);
            return between({38, 48, 62}, {150, 172, 190},
                           std::clamp(0.35 + 0.9 * reflection, 0., 1.));
        });
        for (int curtain = 0; curtain < 11; ++curtain) {
            const double shade = curtain % 2 == 0 ? 0.95 : 0.72;
            box(x + curtain * 2.0, y, 2.0, 88, Colour{214, 204, 182} * shade);
        }
        box(x + 33, y, 4, 88, {236, 232, 224});
        box(x, y + 42, 70, 4, {236, 232, 224});
        box(x - 10, y + 92, 90, 6, {198, 192, 180});
        for (int flower = 0; flower < 26; ++flower) {
            const double size = m_chance.between(1.2, 2.6);
            const Colour colour = flower % 3 == 0   ? Colour{206, 44, 66}
                                  : flower % 3 == 1 ? Colour{236, 196, 62}
                                                    : Colour{54, 118, 50};
            ellipse(x + m_chance.between(0, 70), y + m_chance.between(84, 93), size, size, 0,
                    colour);
        }
    }

    void shop() {
        box(232, 404, 476, 34, {28, 62, 58});
        box(232, 404, 476, 2, {196, 170, 96});
        box(232, 436, 476, 2, {196, 170, 96});
        text("FINE LENSES & GLASS", 300, 430, cv::FONT_HERSHEY_TRIPLEX, 0.86, 1.2, {238, 214, 140});
        // Awning of striped cloth with a fine weave.
        fill(232, 440, 476, 46, [this](double x, double y) {
            const bool isRed = std::fmod(std::floor(x / 17.0), 2.0) == 0.0;
            const double weave = std::sin(x * 2.4) * std::sin(y * 2.4);
            const double fold = 0.9 + 0.1 * std::sin(x / 5.4);
            return (isRed ? Colour{176, 36, 40} : Colour{234, 228, 214}) * (fold + 0.07 * weave);
        });
        for (double x = 232; x < 708; x += 17) {
            ellipse(x + 8.5, 486, 8.5, 7, 0,
                    std::fmod(std::floor(x / 17.0), 2.0) == 0.0 ? Colour{160, 30, 36}
                                                                : Colour{222, 216, 202});
        }
        fill(246, 496, 330, 106, [this](double x, double y) {
            const double inside = m_clouds.at(x / 34, y / 22, 4);
            return between({34, 30, 26}, {232, 186, 110}, std::clamp(0.4 + 0.8 * inside, 0.0, 1.0));
        });
        for (int shelf = 0; shelf < 3; ++shelf) {
            const double y = 524 + shelf * 32.0;
            for (double x = 252; x < 570;) {
                const double wide = m_chance.between(4, 11);
                const double high = m_chance.between(12, 22);
                const Colour colour{m_chance.between(40, 230), m_chance.between(40, 210),
                                    m_chance.between(40, 220)};
                box(x, y - high, wide - 1.2, high, colour);
                line(x + wide / 2 - 0.6, y - high + 3, x + wide / 2 - 0.6, y - 4, colour * 0.6,
                     0.5);
                x += wide;
            }
            box(246, y, 330, 3, {110, 84, 56});
        }
        box(246, 494, 330, 3, {222, 214, 196});
        box(574, 494, 3, 110, {222, 214, 196});
        // Door.
        box(600, 496, 92, 110, {30, 66, 84});
        box(610, 506, 72, 52, {186, 204, 212});
        text("OPEN", 620, 540, cv::FONT_HERSHEY_SIMPLEX, 0.72, 1.6, {170, 28, 32});
        ellipse(684, 562, 3, 3, 0, {226, 196, 104});
    }

    /// A printed notice: the finest lettering of the scene.
    void notice() {
        box(744, 470, 122, 132, {118, 92, 62});
        box(749, 475, 112, 122, {244, 241, 232});
        text("NOTICE", 768, 496, cv::FONT_HERSHEY_COMPLEX, 0.62, 1.0, {24, 24, 28});
        line(757, 502, 853, 502, {24, 24, 28}, 0.8);
        const std::array<const char*, 9> lines{
            "The street will be",  "closed on Sunday,",  "3 June, from 07:15",
            "to 18:45. Kindly",    "leave by the north", "gate. Deliveries:",
            "ring twice, please.", "Tel. 0841 / 62 957", "Office of Works"};
        double y = 514;
        for (const char* words : lines) {
            text(words, 756, y, cv::FONT_HERSHEY_SIMPLEX, 0.30, 0.6, {34, 34, 40});
            y += 9.4;
        }
    }

    void tree(double x, double y, double size) {
        for (int root = -3; root <= 3; ++root) {
            line(x + root * size / 40, y + size * 0.4, x + root * size / 18, 612, {78, 62, 48},
                 size / 20);
        }
        const int leaves = static_cast<int>(size * size / 6.5);
        for (int leaf = 0; leaf < leaves; ++leaf) {
            const double angle = m_chance.between(0, 2 * std::numbers::pi);
            const double distance = std::sqrt(m_chance.between(0, 1)) * size *
                                    (0.86 + 0.3 * m_clouds.at(angle * 1.7, size, 3));
            const double px = x + distance * std::cos(angle);
            const double py = y + 0.86 * distance * std::sin(angle);
            const double light =
                std::clamp(0.55 - (py - y) / size * 0.35, 0.15, 1.0) * m_chance.between(0.55, 1.25);
            const Colour colour = between({36, 58, 26}, {156, 186, 72}, std::min(light, 1.0));
            ellipse(px, py, m_chance.between(1.8, 4.4), m_chance.between(0.9, 1.9),
                    m_chance.between(0, 180), colour);
        }
    }

    void railing() {
        for (double x = -90; x < kFrameWidth + 90; x += 14) {
            if (x > 590 && x < 704) {
                continue; // the way to the door
            }
            line(x, 596, x, 648, {34, 36, 40}, 1.6);
            line(x - 0.7, 596, x - 0.7, 648, {120, 124, 130}, 0.5);
            polygon({{x - 2.2, 597}, {x, 589}, {x + 2.2, 597}}, {38, 40, 44});
        }
        for (const double y : {604.0, 642.0}) {
            line(-90, y, 588, y, {30, 32, 36}, 2.0);
            line(706, y, kFrameWidth + 90, y, {30, 32, 36}, 2.0);
        }
    }

    void wires() {
        line(150, 40, 150, 620, {92, 86, 80}, 5.0);
        for (const double y : {60.0, 76.0}) {
            line(126, y, 174, y, {86, 80, 74}, 3.0);
        }
        for (const double start : {60.0, 68.0, 76.0}) {
            double formerX = 150;
            double formerY = start;
            for (double x = 160; x <= kFrameWidth + 100; x += 10) {
                const double t = (x - 150) / 950.0;
                const double y = start - 46 * t + 120 * t * (t - 1.0) * -0.6;
                line(formerX, formerY, x, y, {44, 46, 52}, 0.9);
                formerX = x;
                formerY = y;
            }
        }
    }

    void balls() {
        const std::array<Colour, 5> colours{
            {{212, 40, 44}, {42, 92, 196}, {240, 196, 40}, {44, 150, 84}, {228, 120, 36}}};
        double x = 300;
        for (const Colour& colour : colours) {
            const double radius = 22 + m_chance.between(0, 12);
            const double y = 734 - radius;
            shadedBall(x, y, radius, colour);
            x += 88 + m_chance.between(0, 16);
        }
    }

    void shadedBall(double x, double y, double radius, const Colour& colour) {
        ellipse(x + radius * 0.4, y + radius * 0.92, radius * 1.15, radius * 0.22, 0, {72, 70, 68});
        ellipse(x, y, radius, radius, 0, colour * 0.55);
        for (int ring = 1; ring <= 40; ++ring) {
            const double t = ring / 40.0;
            const double offset = radius * 0.32 * t;
            ellipse(x - offset, y - offset, radius * (1.0 - 0.96 * t), radius * (1.0 - 0.96 * t), 0,
                    between(colour * 0.55, between(colour, {255, 255, 255}, 0.6), t * t));
        }
    }

    /// Texture for every surface: nothing in a photograph is perfectly even.
    void grain() {
        for (int row = 0; row < m_canvas.rows; ++row) {
            for (int column = 0; column < m_canvas.cols; ++column) {
                const double level = 1.0 + 0.035 * m_clouds.at(column / 3.1, row / 3.1, 3);
                auto& pixel = m_canvas.at<cv::Vec3b>(row, column);
                for (int channel = 0; channel < 3; ++channel) {
                    pixel[channel] = cv::saturate_cast<uchar>(pixel[channel] * level);
                }
            }
        }
    }

    Chance m_chance;
    Clouds m_clouds;
    double m_unit;
    double m_unitDown;
    int m_margin;
    cv::Mat m_canvas;
};

} // namespace

cv::Mat drawScene(int width, int height, int margin, std::uint32_t seed) {
    const cv::Mat large = Painter(width, height, margin, seed).paint();
    cv::Mat wide;
    large.convertTo(wide, CV_32FC3);
    cv::Mat scene;
    cv::resize(wide, scene, {width + 2 * margin, height + 2 * margin}, 0, 0, cv::INTER_AREA);
    return scene;
}

} // namespace velorn::tools
