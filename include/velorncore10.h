/* velorncore10: restores sharpness in photographs.
 *
 * Three things for a host application:
 *
 *   ornDeblurSharpen                    deblurs and sharpens an image with a known blur kernel
 *   ornCreateKernel, ornBlurEstimate    make a blur kernel, or estimate one from an image
 *   PSImage2QImage and the other ps...  turn host pixels into display pixels and between scales
 *
 * The host owns all memory. The library keeps no pointer after a call returns, frees nothing of the
 * host's and never writes through a source pointer. Records are plain data; integers are 32-bit
 * signed, floats are IEEE single precision. Sixteen-bit images hold a 15-bit scale: black is 0,
 * white is 32768.
 *
 * What the host must see to, because no call can check it:
 *
 *   Pointers are valid for the sizes and steps given, and source and target do not overlap.
 *   KernelRecord.data is large enough for what is written into it.
 *
 *   Guarded calls (ornDeblurSharpen, ornBlurEstimate, ornCreateKernel) come from one thread at a
 *   time. The guard is a plain byte: it turns away a call made while another runs, from inside the
 *   progress callback for instance, but not two threads that enter in the same instant.
 *
 *   A host that loads the library at run time may close it after its last call has returned. The
 *   library's threads outlive the calls, so it stays in the process all the same.
 *
 *   ornDeblurSharpen needs a ProgressRecord: a null pointer there is a crash. Its callback may be
 *   null. */
#ifndef VELORNCORE10_H
#define VELORNCORE10_H

#include <stdint.h>

#if defined(_WIN32)
#define VELORN_CALL __cdecl
#if defined(VELORNCORE10_BUILD)
#define VELORN_API __declspec(dllexport)
#else
#define VELORN_API
#endif
#else
#define VELORN_CALL
#define VELORN_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Status codes of the guarded calls ------------------------------------------------------- */

enum {
    /* Finished. Also the answer, with nothing done, of a library that is busy with another call. */
    VELORN_OK = 1,
    /* Cancelled by the progress callback. Target rows already written stay in the target. */
    VELORN_CANCELLED = 0,
    /* ornCreateKernel: no record, no data pointer, or an unknown type. Display: not a colour
     * format, or a null pointer. */
    VELORN_BAD_ARGUMENT = -3,
    /* A failure with a text: see getErrMsg. */
    VELORN_TEXT_FAILURE = -5,
    /* Out of memory, a shape that no memory holds, and every failure that has no status of its own.
     */
    VELORN_FAILURE = -1000,
    /* A kernel too large for the tiles: its margin leaves no room to walk on. */
    VELORN_TILE_GAP = -899,
    /* An image without pixels, a kernel so large that its margin alone fills a tile, or scratch
     * memory that could not be had. */
    VELORN_NO_PIXELS = -898,
    /* Scratch memory was found overwritten. */
    VELORN_GUARD_DAMAGED = -897,
    /* The workspace of the detail stage could not be allocated. */
    VELORN_SMOOTHER_MEMORY = -880,
    /* PSImage2QImage: a failure of any type; the display buffer may be partly written. */
    VELORN_DISPLAY_FAILURE = -1001,
    /* PSImageICC2QImage: a failure of any type in the colour pass. */
    VELORN_COLOUR_FAILURE = -500
};

/* ---- Pixel formats --------------------------------------------------------------------------- */

/* Interleaved host pixels. In the four-channel formats the first element is alpha. 2 and 4 are
 * invalid. */
enum {
    psC3U8 = 1,  /* R G B, 8 bits each */
    psC3U16 = 3, /* R G B, 16 bits each, 0..32768 */
    psC4U8 = 5,  /* A R G B, 8 bits each */
    psC4U16 = 6, /* A R G B, 16 bits each, 0..32768 */
    psC1U8 = 7,  /* grey, 8 bits */
    psC1U16 = 8  /* grey, 16 bits, 0..32768 */
};

/* ---- Records --------------------------------------------------------------------------------- */

/* Told how far a call has come: `current` of `limit`. Zero asks for cancellation, which only
 * ornDeblurSharpen honours; any other result means go on. ornDeblurSharpen calls it on the thread
 * that made the call; ornBlurEstimate may call it on another thread. */
typedef int32_t(VELORN_CALL* ProgressCallback)(int32_t current, int32_t limit, void* userData);

/* The host's progress account, read and updated during a call. */
typedef struct ProgressRecord {
    int32_t total;             /* progress units that this call is to spend */
    int32_t limit;             /* `current` never passes it; second argument of the callback */
    ProgressCallback callback; /* may be null */
    void* userData;            /* handed to the callback; when null, no callback is made at all */
    int32_t current;           /* running counter: the library adds to it and leaves it there */
} ProgressRecord;

/* Source and target of ornDeblurSharpen: separate buffers of equal size, three interleaved channels
 * (red, green, blue). Steps are positive and at least a row long; odd steps are served, too. The
 * target is read again where tiles overlap: nobody else may touch it during the call. */
typedef struct ImageRecord {
    int32_t format;     /* 1: 8 bits a channel; every other value: 16 bits a channel */
    const void* source; /* first pixel of the source */
    int32_t sourceStep; /* bytes from one source row to the next */
    void* target;       /* first pixel of the target, of the same type */
    int32_t targetStep; /* bytes from one target row to the next */
    int32_t width;      /* pixels per row of both images, at least 1 */
    int32_t height;     /* rows of both images, at least 1 */
} ImageRecord;

/* One image that is only read. */
typedef struct PlaneRecord {
    int32_t format;   /* psC3U8 ... */
    const void* data; /* first pixel */
    int32_t step;     /* bytes from one row to the next */
    int32_t width;    /* pixels per row */
    int32_t height;   /* rows */
} PlaneRecord;

/* A blur kernel: `width` times `height` floats, row after row without padding, sum 1, odd sides.
 * The centre is always (height / 2, width / 2); the anchors are carried for the host alone. */
typedef struct KernelRecord {
    int32_t width;   /* columns */
    int32_t height;  /* rows */
    int32_t anchorX; /* centre column */
    int32_t anchorY; /* centre row */
    float* data;     /* the host's memory */
} KernelRecord;

/* Source and target ICC profiles as blocks of memory. A missing one (null pointer or size below 1)
 * stands for sRGB; when both are missing there is no colour management. */
typedef struct PSProfilesRecord {
    const void* inData;  /* profile of the picture */
    int32_t inSize;      /* its bytes */
    const void* outData; /* profile of the display */
    int32_t outSize;     /* its bytes */
} PSProfilesRecord;

/* ---- Restoration ----------------------------------------------------------------------------- */

/* Deblurs and sharpens image->source into image->target.
 *
 * kernel          the blur. Keep its larger side below (tile - 48) / 4, where the tile is 256 for
 *                 images of up to 256 pixels on the larger side, 1024 for 513 to 1024 and 512 for
 *                 all others. Larger kernels end with VELORN_TILE_GAP or VELORN_NO_PIXELS, and just
 *                 below the bound tiles are small and many. A kernel whose sum is not 1 scales the
 *                 picture.
 * deconvolve      0 leaves the deconvolution out; the kernel then only sets a margin: its data may
 *                 be null, its sides may be 0
 * deconvLambda    strength: how hard the result follows the kernel; detail and noise rise with it.
 *                 It suits the noise of the picture: docs/default-strength.md has a measured rule
 * deconvAlpha     0..1 (cut to it), exponent of the gradient prior: low values favour few and sharp
 *                 edges, high values spare soft transitions
 * limitStrength   0..1: 0 lets overshoot at edges through, 1 holds it to what the neighbourhood
 *                 shows; below 0.1 the limiter is off
 * edgeRadius      pixels, base radius of edge sharpening; below 0.4 it leaves the picture as it is,
 *                 and a radius of exactly 0 is none: it makes the picture black
 * edgeSlope, edgeGain
 *                 edge sharpening runs when either is above 1.01. The gain multiplies detail
 *                 everywhere, 1 leaves it as it is; the slope adds to the gain beside edges
 * edgeFloor       at least 0.00001 (raised to it), on the scale where 1 is white: higher values
 *                 keep the slope's part away from calm areas
 * detailGain, detailGamma
 *                 detail enhancement runs when either is above 0.01; it works on brightness and
 *                 leaves edges alone. A gain above 0 multiplies detail by 1 + 3*gain, one below 0
 *                 by 1 + gain; the gamma lifts fine detail and holds strong detail back (above 0),
 *                 or the reverse
 *
 * NaN and infinite settings are legal and never crash. The call uses several threads.
 *
 * Returns VELORN_OK; VELORN_CANCELLED; VELORN_TEXT_FAILURE for a null image or kernel, null pixels,
 * a step shorter than a row, a negative kernel side or, when deconvolving, a kernel without
 * elements or data; VELORN_NO_PIXELS; VELORN_TILE_GAP; VELORN_SMOOTHER_MEMORY;
 * VELORN_GUARD_DAMAGED; VELORN_FAILURE. After cancellation or failure, target rows already written
 * stay in the target. */
VELORN_API int32_t VELORN_CALL ornDeblurSharpen(ProgressRecord* progress, ImageRecord* image,
                                                KernelRecord* kernel, int32_t deconvolve,
                                                float deconvLambda, float deconvAlpha,
                                                float limitStrength, float edgeRadius,
                                                float edgeSlope, float edgeGain, float edgeFloor,
                                                float detailGain, float detailGamma);

/* Estimates the blur kernel of an image blindly, from the image alone.
 *
 * progress   must exist; its callback may be null. The callback's result is ignored: the call
 *            cannot be cancelled
 * image      psC3U8, or three 16-bit channels with any other format code. The step is at least a
 *            row long
 * kernel     width and height say how large a kernel to look for (odd sides; an even one is solved
 *            one larger and loses its last row or column); that many floats are written to data,
 *            without padding, and the anchors stay as they are. A side below 1 zeroes the record's
 *            first four fields and returns VELORN_OK. Time and memory grow fast with the size:
 *            more than 16 * (width * height)^2 bytes are needed at once, 15 MB for 31 by 31,
 *            252 MB for 63 by 63
 * strength   0.2..2 softens the last edge image with that sigma, in pixels; below 0.2 it is off,
 *            and more than 2 acts as 2
 *
 * The kernel has no negative values and sums to 1, or to 1 at most where an even side lost a row or
 * column. It is the same for any number of threads. What the host must see to:
 *
 *   An image without edges, or one too small for the kernel, yields a kernel of not-a-number values
 *   and VELORN_OK all the same: test data[0] == data[0] before the kernel is used, for it would
 *   spoil the picture.
 *   A kernel of an asymmetric blur may come back turned by 180 degrees: the picture does not say
 *   which way round it was. Hosts restore a piece of the picture with both and keep the better one.
 *
 * Returns VELORN_OK; VELORN_TEXT_FAILURE for a null record, null data or a step shorter than a row;
 * VELORN_NO_PIXELS for an image without columns or rows; VELORN_FAILURE. After a failure the
 * kernel's data is as it was. */
VELORN_API int32_t VELORN_CALL ornBlurEstimate(ProgressRecord* progress, PlaneRecord* image,
                                               KernelRecord* kernel, float strength);

/* Makes an analytic kernel and fills the whole record. data must hold as many floats as given here;
 * sizes and lengths are in pixels.
 *
 * type 0   Gaussian, paramA = standard deviation; n by n with n = 2 * trunc(3 * paramA + 0.5) + 1.
 *          A deviation of 0 gives a single NaN element
 * type 1   disc (lens out of focus), paramA = radius; n by n with n = 2 * trunc(paramA + 0.5) + 1.
 *          A radius of 0 gives a single NaN element
 * type 2   straight motion, paramA = length, paramB = angle in degrees, rising to the right; at
 * most n by n with n = 2 * trunc((max(1, paramA) + 1) / 2) + 1. Lengths below 1 count as 1; an
 *          angle that is not finite gives a single NaN element
 *
 * Returns VELORN_OK; VELORN_BAD_ARGUMENT, with the record untouched, for a null record, null data
 * or another type; VELORN_FAILURE for a shape that no memory holds, negative sizes included. */
VELORN_API int32_t VELORN_CALL ornCreateKernel(int32_t type, float paramA, float paramB,
                                               KernelRecord* kernel);

/* The text of the last guarded call, when that call returned VELORN_TEXT_FAILURE; otherwise empty.
 * Never null. Valid until the next guarded call, which clears it even when it is turned away. The
 * text may carry one stale character at its end. */
VELORN_API const char* VELORN_CALL getErrMsg(void);

/* Kept for hosts that call them: without effect, always 0. setDebugTrace reads no argument. */
VELORN_API int32_t VELORN_CALL velSetupLib(int32_t first, int32_t second);
#if defined(__cplusplus) || (defined(__STDC_VERSION__) && __STDC_VERSION__ >= 202311L)
VELORN_API int32_t VELORN_CALL setDebugTrace(...);
#else
VELORN_API int32_t VELORN_CALL setDebugTrace();
#endif

/* ---- Display and scales (no guard, no error text, any thread) -------------------------------- */

/* Writes a colour image as display pixels: bytes blue, green, red, 255. Sixteen-bit levels are cut
 * down by truncation, white shows as 255.
 *
 * image     three elements a pixel are read whatever the format: pixels of the four-channel formats
 *           are accepted and come out wrong, so hand over psC3U8 or psC3U16
 * dst       first pixel of the display buffer, dstWidth by dstHeight pixels of four bytes
 * dstStep   bytes from one display row to the next
 * scale     0.99 to 1.01 copies the overlap of image and buffer and leaves the rest of the buffer
 * as it is. Any other scale resamples, with linear interpolation, and writes the whole buffer:
 * black where the scaled image does not reach, and everywhere for a scale that is not above 0
 *
 * Returns VELORN_OK; VELORN_BAD_ARGUMENT, with nothing written, for a format without three colours
 * or a null pointer; VELORN_DISPLAY_FAILURE. The call uses several threads. */
VELORN_API int32_t VELORN_CALL PSImage2QImage(PlaneRecord* image, void* dst, int32_t dstStep,
                                              int32_t dstWidth, int32_t dstHeight, float scale);

/* PSImage2QImage, then every pixel of the buffer from the source profile to the target profile,
 * relative colorimetric. Without profiles (a null record, both pointers null or both sizes below 1)
 * the second step is left out. Profiles are RGB profiles, and are read on every call.
 *
 * Returns what PSImage2QImage returns when that is not VELORN_OK; VELORN_OK; 0 when a profile or
 * the transform was refused: the buffer then shows the picture without colour management;
 * VELORN_COLOUR_FAILURE. */
VELORN_API int32_t VELORN_CALL PSImageICC2QImage(PSProfilesRecord* profiles, PlaneRecord* image,
                                                 void* dst, int32_t dstStep, int32_t dstWidth,
                                                 int32_t dstHeight, float scale);

/* One channel, 8 bits to the 15-bit scale: out = (v + 1) * 128, black becomes 128 and white 32768.
 * Steps are bytes from one row to the next. Always 1: a null pointer or a size below 1 leaves the
 * target as it is. */
VELORN_API int32_t VELORN_CALL psC1U8toU15(const void* src, int32_t srcStep, int32_t width,
                                           int32_t height, void* dst, int32_t dstStep);

/* The exact inverse of psC1U8toU15 on its 256 levels; values between them go to the nearest, ties
 * to the even one, and everything above white to 255. Always 1: a null pointer, a size below 1 or
 * exhausted memory leaves the target as it is. */
VELORN_API int32_t VELORN_CALL psC1U15toU8(const void* src, int32_t srcStep, int32_t width,
                                           int32_t height, void* dst, int32_t dstStep);

#ifdef __cplusplus
}
#endif

#endif
