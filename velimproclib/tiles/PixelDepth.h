#pragma once

#include "velimproclib/images/stepOf.h"
#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"
#include "velimproclib/primitives/pixels/Conversions.h"

#include <cstdint>
#include <opencv2/core.hpp>

/// The element types of the images that the tile iterators walk.
namespace vel {

/// The conversions of an element type from and to float planes.
template <class T>
struct PixelDepth;

template <>
struct PixelDepth<std::uint8_t> {
    static constexpr auto kToFloat = convertU8toF32;
    static constexpr auto kFromFloat = convertF32toU8;
};

template <>
struct PixelDepth<std::int16_t> {
    static constexpr auto kToFloat = convertS16toF32;
    static constexpr auto kFromFloat = convertF32toS16;
};

template <>
struct PixelDepth<std::uint16_t> {
    static constexpr auto kToFloat = convertU16toF32;
    static constexpr auto kFromFloat = convertF32toU16;
};

/// Multiplies the values of a CV_32FC1 plane by `factor`.
inline void scalePlane(cv::Mat& plane, float factor) {
    mulConstInPlaceF32(factor, plane.ptr<float>(), stepOf(plane), plane.cols, plane.rows);
}

/// Calls `work.template operator()<T>()` with the element type of `image`: 8 bits, or `Wide`.
template <class Wide, class Work>
void withElementsOf(const cv::Mat& image, const Work& work) {
    if (image.depth() == CV_8U) {
        work.template operator()<std::uint8_t>();
    } else {
        work.template operator()<Wide>();
    }
}

} // namespace vel
