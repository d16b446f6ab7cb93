#pragma once

#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// Scales the weights to sum 1. The sum of `kernel` is above 0.
void scaleToUnitSum(SquareKernel& kernel);

/// A Gaussian of 0.8 pixels, sum 1.
SquareKernel startingKernel(int side);

/// Removes weights below `threshold` times the largest one, then 8-connected pieces lighter than a
/// tenth of the heaviest one, and scales the sum to 1. The sum of `kernel` is above 0.
void removeSpecks(double threshold, SquareKernel& kernel);

/// Moves the centre of mass to the middle by whole pixels; what falls off is lost. The sum stays 1.
void recentre(SquareKernel& kernel);

/// Resamples a kernel linearly on a grid whose pitch is `pitch` pixels of `kernel`, about the
/// centre; sum 1.
SquareKernel resampled(const SquareKernel& kernel, int side, double pitch);

/// The side of the smallest centred square that holds all weights; 1 at least.
int extentOf(const SquareKernel& kernel);

/// The central square of side `side`, or the kernel amid zeros where `side` is larger; the sum is
/// scaled to 1.
SquareKernel withSide(const SquareKernel& kernel, int side);

/// The entropy of the weights less the logarithm of the standard deviations along both axes of the
/// kernel: small for scattered weights and for kernels with a dark middle.
double raggednessOf(const SquareKernel& kernel);

/// The sum of the products of the weights of `first` and of `second` moved by whole pixels.
double sumOfProducts(const SquareKernel& first, const SquareKernel& second, int right, int down);

/// The correlation of two kernels after the best shift by whole pixels: the largest sum of products
/// over the root of the product of their summed squares. 0..1; 1 for kernels that differ by a
/// shift.
double likeness(const SquareKernel& first, const SquareKernel& second);

/// The same for shifts by one pixel at most.
double likenessNearby(const SquareKernel& first, const SquareKernel& second);

} // namespace restoration
