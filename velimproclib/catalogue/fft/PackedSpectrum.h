#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Arithmetic on the spectra of real images.
///
/// Packed spectrum of a w by h image, a float plane of the same size; F(v, u) is the spectrum, v
/// the row, u the column:
///   row 0:                F(0,0).re, then F(0,u).re, F(0,u).im for u = 1, 2.., last F(0,w/2).re;
///   column 0, row 1 on:   F(v,0).re, F(v,0).im for v = 1, 2.., last F(h/2,0).re;
///   column w-1, row 1 on: the same of F(v,w/2);
///   all other rows v:     F(v,u).re, F(v,u).im for u = 1..w/2-1 in columns 1..w-2.
/// F(0,0), F(0,w/2), F(h/2,0) and F(h/2,w/2) are real. The rest of the spectrum follows from
/// F(-v,-u) = conj F(v,u).
/// An odd w has no column w/2: its rows end with the pair of u = (w-1)/2, and only column 0 is
/// packed downwards. An odd h has no row h/2: column 0 ends with the pair of v = (h-1)/2.
///
/// A complex plane holds w pairs (re, im) of floats a row. Widths count pixels, steps are bytes
/// between rows; planes may have any alignment. Every function returns kOk, kNullPointer, kBadSize
/// (a side below 1) or kBadStep (below 1), checked in this order, and writes nothing when a check
/// fails. Every sum and every product is rounded, in the order written here: the bits are the same
/// on every processor variant.
namespace vel {

/// Expands a packed spectrum into all w by h complex frequencies. Not in place.
Status packToComplex(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                     std::int32_t w, std::int32_t h) noexcept;

/// Packs a complex plane. Frequencies that follow from others by symmetry and the imaginary parts
/// of the real frequencies are not read. Not in place.
Status complexToPack(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                     std::int32_t w, std::int32_t h) noexcept;

/// dst = a conj(b) of packed spectra: (a.re b.re + a.im b.im, a.im b.re - a.re b.im), and the plain
/// product for real frequencies. `dst` may be `a` or `b`.
Status mulPackConj(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                   float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

/// Magnitudes sqrt(re re + im im) of all w by h frequencies of a packed spectrum, as a real plane;
/// the absolute value for real frequencies. Not in place.
Status magnitudePack(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                     std::int32_t w, std::int32_t h) noexcept;

/// dst = b / a of complex planes, with d = a.re a.re + a.im a.im:
/// ((a.re b.re + a.im b.im) / d, (a.re b.im - a.im b.re) / d). Where d is 0 both parts are NaN, and
/// the result is kDivisionByZero. `dst` may be `a` or `b`.
Status divComplex(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                  float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

/// dst = a + b of complex planes. `dst` may be `a` or `b`.
Status addComplex(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                  float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

/// dst = src (constRe, constIm) of a complex plane:
/// (re constRe - im constIm, re constIm + im constRe). `dst` may be `src`.
Status mulConstComplex(const float* src, std::int32_t srcStep, float constRe, float constIm,
                       float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

} // namespace vel
