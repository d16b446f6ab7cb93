#pragma once

#include <opencv2/core.hpp>

namespace vel {

/// Solves matrix * x = rightHand by Cholesky's method, in double precision.
///
/// The order of operations is fixed: each element of the factor is its matrix element minus its
/// products in ascending order, each product and difference rounded, then multiplied by the
/// reciprocal of its row's pivot. The result has the same bits on every processor. Above 3 unknowns
/// it equals the result of `cv::solve` with DECOMP_CHOLESKY where OpenCV runs without LAPACK.
///
/// @param matrix CV_64FC1, n by n, symmetric; the upper half is read
/// @param rightHand CV_64FC1, n rows, one column
/// @param x CV_64FC1, n rows, one column, allocated; undefined after a failure
/// @return false when a pivot is not positive: the matrix is not positive definite, or so nearly
///         singular that rounding hides it
/// @throws std::bad_alloc; needs about 4 * n^2 bytes
bool solvePositiveDefinite(const cv::Mat& matrix, const cv::Mat& rightHand, cv::Mat& x);

} // namespace vel
