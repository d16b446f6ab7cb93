#include "LocalBlurs.h"

#include "BlurFamilies.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <opencv2/imgproc.hpp>
#include <random>

namespace velorn::tools {
namespace {

/// Angles about the three axes, in radians.
using Pose = std::array<double, 3>;

/// A smooth random path of extent 1 about each axis, with mean 0.
std::vector<Pose> smoothPath(std::uint32_t seed) {
    constexpr int kOscillations = 5;
    constexpr int kPoses = 72;
    std::mt19937 generator(seed);
    const auto uniform = [&] { return static_cast<double>(generator()) / 4294967296.0; };
    std::vector<Pose> path(kPoses);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        std::array<double, kOscillations> phases{};
        std::array<double, kOscillations> heights{};
        for (std::size_t i = 0; i < phases.size(); ++i) {
            phases[i] = 2.0 * std::numbers::pi * uniform();
            heights[i] = uniform() / std::pow(static_cast<double>(i) + 1.0, 1.5);
        }
        double least = 1e9;
        double most = -1e9;
        double sum = 0.0;
        for (std::size_t p = 0; p < path.size(); ++p) {
            const double time = static_cast<double>(p) / kPoses;
            double place = 0.0;
            for (std::size_t i = 0; i < phases.size(); ++i) {
                place +=
                    heights[i] *
                    std::sin(std::numbers::pi * (static_cast<double>(i) + 1.0) * time + phases[i]);
            }
            path[p][axis] = place;
            least = std::min(least, place);
            most = std::max(most, place);
            sum += place;
        }
        for (Pose& pose : path) {
            pose[axis] = (pose[axis] - sum / kPoses) / (most - least);
        }
    }
    return path;
}

/// A camera that turns while the shutter is open.
class TurningCamera {
public:
    TurningCamera(const Shake& shake, std::uint32_t seed, cv::Size size)
        : m_size(size), m_focal(std::max(size.width, size.height)), m_poses(smoothPath(seed)) {
        const double corner = std::hypot(size.width, size.height) / 2.0;
        for (Pose& pose : m_poses) {
            pose[0] *= shake.shift / m_focal;
            pose[1] *= shake.shift / m_focal;
            pose[2] *= shake.roll / corner;
        }
    }

    cv::Mat blurred(const cv::Mat& picture) const {
        cv::Mat sum = cv::Mat::zeros(picture.size(), CV_32FC3);
        cv::Mat map(picture.size(), CV_32FC2);
        cv::Mat seen;
        for (const Pose& pose : m_poses) {
            const Turn turn(pose, *this);
            for (int y = 0; y < map.rows; ++y) {
                for (int x = 0; x < map.cols; ++x) {
                    map.at<cv::Vec2f>(y, x) = turn.of(x, y);
                }
            }
            cv::remap(picture, seen, map, cv::noArray(), cv::INTER_CUBIC, cv::BORDER_REPLICATE);
            sum += seen;
        }
        return sum / static_cast<double>(m_poses.size());
    }

    BlurKernel kernelAt(double x, double y) const {
        const double left = x * m_size.width - 0.5;
        const double top = y * m_size.height - 0.5;
        std::vector<cv::Vec2d> places;
        double reach = 0.0;
        for (const Pose& pose : m_poses) {
            const cv::Vec2f seen = Turn(pose, *this).of(left, top);
            places.emplace_back(left - static_cast<double>(seen[0]),
                                top - static_cast<double>(seen[1]));
            reach = std::max({reach, std::abs(places.back()[0]), std::abs(places.back()[1])});
        }
        const int radius = static_cast<int>(std::ceil(reach)) + 1;
        BlurKernel kernel{2 * radius + 1, 2 * radius + 1, {}};
        kernel.weights.assign(
            static_cast<std::size_t>(kernel.width) * static_cast<std::size_t>(kernel.height), 0.0f);
        for (const cv::Vec2d& place : places) {
            addPoint(place[0] + radius, place[1] + radius, kernel);
        }
        return kernel;
    }

    int reach() const {
        int reach = 0;
        for (const double x : {0.0, 0.5, 1.0}) {
            for (const double y : {0.0, 0.5, 1.0}) {
                reach = std::max(reach, kernelAt(x, y).width / 2);
            }
        }
        return reach + 2;
    }

private:
    /// The projective warp of one pose.
    class Turn {
    public:
        Turn(const Pose& pose, const TurningCamera& camera)
            : m_focal(camera.m_focal),
              m_middle((camera.m_size.width - 1) / 2.0, (camera.m_size.height - 1) / 2.0) {
            const auto [a, b, c] = pose;
            const cv::Matx33d aboutX(1, 0, 0, 0, std::cos(a), -std::sin(a), 0, std::sin(a),
                                     std::cos(a));
            const cv::Matx33d aboutY(std::cos(b), 0, std::sin(b), 0, 1, 0, -std::sin(b), 0,
                                     std::cos(b));
            const cv::Matx33d aboutZ(std::cos(c), -std::sin(c), 0, std::sin(c), std::cos(c), 0, 0,
                                     0, 1);
            m_rotation = aboutZ * aboutY * aboutX;
        }

        cv::Vec2f of(double x, double y) const {
            const cv::Vec3d ray = m_rotation * cv::Vec3d(x - m_middle.x, y - m_middle.y, m_focal);
            return {static_cast<float>(m_focal * ray[0] / ray[2] + m_middle.x),
                    static_cast<float>(m_focal * ray[1] / ray[2] + m_middle.y)};
        }

    private:
        double m_focal;
        cv::Point2d m_middle;
        cv::Matx33d m_rotation;
    };

    void addPoint(double x, double y, BlurKernel& kernel) const {
        const int left = static_cast<int>(std::floor(x));
        const int top = static_cast<int>(std::floor(y));
        for (const int row : {top, top + 1}) {
            for (const int column : {left, left + 1}) {
                const double weight = (1.0 - std::abs(x - column)) * (1.0 - std::abs(y - row)) /
                                      static_cast<double>(m_poses.size());
                kernel.weights[static_cast<std::size_t>(row * kernel.width + column)] +=
                    static_cast<float>(weight);
            }
        }
    }

    cv::Size m_size;
    double m_focal;
    std::vector<Pose> m_poses;
};

cv::Mat convolved(const cv::Mat& picture, const BlurKernel& kernel) {
    // filter2D correlates: rotated by 180 degrees, the kernel convolves.
    BlurKernel rotated = kernel;
    std::ranges::reverse(rotated.weights);
    const cv::Mat weights(rotated.height, rotated.width, CV_32FC1, rotated.weights.data());
    cv::Mat whole;
    cv::filter2D(picture, whole, CV_32F, weights, {-1, -1}, 0.0, cv::BORDER_REPLICATE);
    return whole;
}

/// Whether a place belongs to the subject.
bool isInside(double x, double y) {
    return std::hypot(x - 0.5, y - 0.5) < 0.25;
}

BlurKernel line(int length, double degrees) {
    return makeKernel(
        {AnalyticBlur::Shape::Motion, static_cast<float>(length), static_cast<float>(degrees)});
}

BlurKernel disc(double radius) {
    return makeKernel({AnalyticBlur::Shape::Disc, static_cast<float>(radius), 0.0f});
}

} // namespace

LocalBlur rotation(const Shake& shake, std::uint32_t seed, cv::Size size) {
    const TurningCamera camera(shake, seed, size);
    const auto text = [](double pixels) { return std::to_string(std::lround(pixels)); };
    return {"rotation",
            "turn " + text(shake.shift) + ", roll " + text(shake.roll) + " (" +
                std::to_string(seed) + ")",
            [camera](const cv::Mat& picture) { return camera.blurred(picture); },
            [camera](double x, double y) { return camera.kernelAt(x, y); }, camera.reach()};
}

LocalBlur subject(const std::string& name, const BlurKernel& inside, const BlurKernel& outside) {
    const auto blurred = [=](const cv::Mat& picture) {
        cv::Mat shape(picture.size(), CV_32FC1);
        for (int y = 0; y < shape.rows; ++y) {
            for (int x = 0; x < shape.cols; ++x) {
                shape.at<float>(y, x) =
                    isInside((x + 0.5) / shape.cols, (y + 0.5) / shape.rows) ? 1.0f : 0.0f;
            }
        }
        cv::merge(std::vector<cv::Mat>(3, convolved(shape, inside)), shape);
        const cv::Mat front = convolved(picture, inside).mul(shape);
        return cv::Mat(front + convolved(picture, outside).mul(cv::Scalar::all(1.0) - shape));
    };
    const int reach = std::max(inside.largerSide(), outside.largerSide()) / 2;
    return {"subject", name, blurred,
            [=](double x, double y) { return isInside(x, y) ? inside : outside; }, reach};
}

std::vector<LocalBlur> localBlurs(int half, cv::Size size) {
    const auto seed = static_cast<std::uint32_t>(half);
    const BlurKernel sharp{1, 1, {1.0f}};
    std::vector<LocalBlur> blurs;
    for (const auto& [shake, number] :
         {std::pair{Shake{14, 0}, 1U}, std::pair{Shake{12, 6}, 3U}, std::pair{Shake{9, 9}, 5U},
          std::pair{Shake{6, 12}, 7U}, std::pair{Shake{16, 10}, 9U}}) {
        blurs.push_back(rotation(shake, number + seed, size));
    }
    if (half == 0) {
        blurs.push_back(subject("sharp before disc 4", sharp, disc(4)));
        blurs.push_back(subject("disc 4 before disc 2", disc(4), disc(2)));
        blurs.push_back(subject("motion 15 before sharp", line(15, 20), sharp));
        blurs.push_back(subject("motion 13 before shake 9", line(13, 70), randomShake(9, 40)));
    } else {
        blurs.push_back(subject("sharp before disc 5", sharp, disc(5)));
        blurs.push_back(subject("disc 3 before disc 1.5", disc(3), disc(1.5)));
        blurs.push_back(subject("motion 17 before sharp", line(17, 155), sharp));
        blurs.push_back(subject("motion 11 before shake 11", line(11, 0), randomShake(11, 41)));
    }
    return blurs;
}

} // namespace velorn::tools
