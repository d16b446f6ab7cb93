#include "BlurFamilies.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace velorn::tools {
namespace {

std::string number(double value) {
    std::string text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

FamilyBlur line(int length, double degrees) {
    const double angle = degrees * std::acos(-1.0) / 180.0;
    const double right = (length - 1) / 2.0 * std::cos(angle);
    const double down = -(length - 1) / 2.0 * std::sin(angle);
    const std::array<PathPoint, 2> path{{{-right, -down, 1.0}, {right, down, 1.0}}};
    return {
        "line",
        {std::to_string(length) + " at " + number(degrees), pathKernel(path, (length + 3) | 1)}};
}

FamilyBlur disc(double radius) {
    return {"disc",
            {"disc " + number(radius),
             makeKernel({AnalyticBlur::Shape::Disc, static_cast<float>(radius), 0.0f})}};
}

FamilyBlur gaussian(double sigma) {
    return {"Gaussian",
            {"Gaussian " + number(sigma),
             makeKernel({AnalyticBlur::Shape::Gaussian, static_cast<float>(sigma), 0.0f})}};
}

FamilyBlur shake(int extent, std::uint32_t seed) {
    return {"shake",
            {"shake " + std::to_string(extent) + " (" + std::to_string(seed) + ")",
             randomShake(extent, seed)}};
}

FamilyBlur hook(int extent, int turn) {
    const double r = extent / 2.0;
    std::array<PathPoint, 4> path{
        {{-0.7 * r, -r, 1.0}, {-0.7 * r, 0.5 * r, 0.7}, {-0.2 * r, r, 0.5}, {0.8 * r, r, 0.3}}};
    for (PathPoint& point : path) {
        for (int i = 0; i < turn; ++i) {
            point = {-point.down, point.right, point.stay};
        }
    }
    return {"hook or lobes",
            {"hook " + std::to_string(extent), pathKernel(path, (extent + 7) | 1)}};
}

FamilyBlur lobes(double right, double down, int side) {
    const std::array<PathPoint, 6> path{{{-right, -down, 1.0},
                                         {-right + 1.5, -down + 1.0, 1.0},
                                         {-right + 1.6, -down + 1.0, 0.02},
                                         {right - 1.6, down, 0.02},
                                         {right - 1.5, down, 0.5},
                                         {right, down + 1.0, 0.5}}};
    return {"hook or lobes", {"lobes " + number(right), pathKernel(path, side)}};
}

FamilyBlur none() {
    return {"none", {"none", BlurKernel{1, 1, {1.0f}}}};
}

} // namespace

BlurKernel randomShake(int extent, std::uint32_t seed) {
    // The camera's speed is a sum of slow oscillations of random phases.
    constexpr int kOscillations = 6;
    constexpr int kPoints = 200;
    std::mt19937 generator(seed);
    const auto uniform = [&] { return static_cast<double>(generator()) / 4294967296.0; };
    std::array<std::array<double, 2>, kOscillations> phases{};
    std::array<std::array<double, 2>, kOscillations> sizes{};
    for (int i = 0; i < kOscillations; ++i) {
        for (int axis = 0; axis < 2; ++axis) {
            const auto k = static_cast<std::size_t>(i);
            const auto a = static_cast<std::size_t>(axis);
            phases[k][a] = 2.0 * std::acos(-1.0) * uniform();
            sizes[k][a] = (0.3 + uniform()) / (1.0 + i);
        }
    }
    std::vector<PathPoint> path;
    for (int t = 0; t < kPoints; ++t) {
        std::array<double, 2> place{};
        for (std::size_t k = 0; k < kOscillations; ++k) {
            for (std::size_t axis = 0; axis < 2; ++axis) {
                const double angle = 2.2 * static_cast<double>(k + 1) * t / kPoints;
                place[axis] += sizes[k][axis] * std::sin(angle + phases[k][axis]);
            }
        }
        path.push_back({place[0], place[1], 1.0});
    }
    const auto range = [&](double PathPoint::*axis) {
        const auto [least, largest] = std::ranges::minmax_element(path, {}, axis);
        return (*largest).*axis - (*least).*axis;
    };
    const double reach = std::max(range(&PathPoint::right), range(&PathPoint::down));
    for (PathPoint& point : path) {
        point.right *= (extent - 1) / reach;
        point.down *= (extent - 1) / reach;
    }
    // Equal times between points: short distances stay longer.
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        const double length =
            std::hypot(path[i + 1].right - path[i].right, path[i + 1].down - path[i].down);
        path[i].stay = 1.0 / std::max(length, 0.02);
    }
    path.back().stay = path[path.size() - 2].stay;
    return pathKernel(path, (2 * extent) | 1);
}

std::vector<FamilyBlur> blurFamilies(int half) {
    if (half == 0) {
        return {line(5, 20),
                line(9, 90),
                line(11, 75),
                line(17, 0),
                line(25, 130),
                line(41, 50),
                line(57, 105),
                disc(2),
                disc(4),
                disc(7),
                disc(12),
                gaussian(1),
                gaussian(2),
                gaussian(3.5),
                shake(11, 1),
                shake(15, 2),
                shake(21, 3),
                shake(27, 4),
                shake(35, 5),
                shake(13, 11),
                shake(17, 12),
                shake(23, 13),
                shake(31, 14),
                shake(45, 15),
                hook(9, 0),
                hook(17, 2),
                hook(29, 1),
                lobes(3, 1.5, 15),
                lobes(10, 4.5, 29),
                none()};
    }
    return {line(7, 110),  line(15, 0),   line(13, 45),     line(19, 90),    line(31, 160),
            line(51, 25),  line(61, 70),  disc(3),          disc(5.5),       disc(9),
            disc(14),      gaussian(1.5), gaussian(2.5),    gaussian(4),     shake(9, 6),
            shake(13, 7),  shake(19, 8),  shake(25, 9),     shake(33, 10),   shake(11, 16),
            shake(15, 17), shake(21, 18), shake(29, 19),    shake(39, 20),   hook(13, 1),
            hook(23, 3),   hook(35, 0),   lobes(6, -2, 21), lobes(8, 7, 27), none()};
}

} // namespace velorn::tools
