#pragma once

#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// The sum of the products of the weights of `first` and of `second` moved by whole pixels.
double sumOfProducts(const SquareKernel& first, const SquareKernel& second, int right, int down);

/// The correlation of two kernels after the best shift by whole pixels: the largest sum of products
/// over the root of the product of their summed squares. 0..1; 1 for kernels that differ by a
/// shift.
double likeness(const SquareKernel& first, const SquareKernel& second);

/// The same for shifts by one pixel at most.
double likenessNearby(const SquareKernel& first, const SquareKernel& second);

} // namespace restoration
