/* velorncore10: restores sharpness in photographs.
 *
 * The library does three things for a host application:
 *
 *   ornDeblurSharpen                    deblurs and sharpens an image with a known blur kernel
 *   ornCreateKernel, ornBlurEstimate    create a blur kernel, or estimate one from an image
 *   PSImage2QImage, PSImageICC2QImage,
 *   psC1U8toU15, psC1U15toU8            convert host pixels for display and between scales
 *
 * Memory. The host owns all memory. The library keeps no pointer after a call returns, frees no
 * host memory and never writes through a source pointer. Pointers must be valid for the given
 * sizes and steps. Source and target must not overlap. No call can check either.
 *
 * Data. Records are plain data. Integers are 32-bit signed, floats are IEEE single precision.
 * Sixteen-bit images use a 15-bit scale: 0 is black, 32768 is white. Steps count bytes. Pixels may
 * start at any address, and steps may be odd.
 *
 * Threads. Call the guarded functions (ornDeblurSharpen, ornBlurEstimate, ornCreateKernel) from one
 * thread at a time. The guard is a plain byte. It refuses a call that is made while another one
 * runs, for example from inside the progress callback. It does not protect against two threads that
 * enter at the same instant. The display and scale functions have no guard: any thread may call
 * them at any time, also while a guarded call runs. Most calls use several threads internally. The
 * results do not depend on the number of threads.
 *
 * Loading. A host that loads the library at run time may close it after its last call has returned.
 * The library remains in the process, because its worker threads outlive the calls. */
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

/* ---- Status codes ---------------------------------------------------------------------------- */

enum {
    /* The call finished. A guarded call also returns this, without doing anything, while another
     * guarded call runs. */
    VELORN_OK = 1,
    /* The progress callback cancelled the call. Finished target rows remain in the target. */
    VELORN_CANCELLED = 0,
    /* ornCreateKernel: null record, null data or unknown type.
     * Display functions: format without three colours, or null pointer. */
    VELORN_BAD_ARGUMENT = -3,
    /* A failure with a text; see getErrMsg. */
    VELORN_TEXT_FAILURE = -5,
    /* Out of memory, a kernel too large to allocate, and every failure without a status of its
     * own. */
    VELORN_FAILURE = -1000,
    /* The kernel is too large for the tiles: its margin leaves gaps between them. */
    VELORN_TILE_GAP = -899,
    /* The image has no pixels, the margin of the kernel alone fills a tile, or the allocation of a
     * scratch image failed. */
    VELORN_NO_PIXELS = -898,
    /* A scratch image was overwritten beyond its end. */
    VELORN_GUARD_DAMAGED = -897,
    /* The workspace of the detail stage could not be allocated. */
    VELORN_SMOOTHER_MEMORY = -880,
    /* PSImage2QImage: any failure. The display buffer may be partly written. */
    VELORN_DISPLAY_FAILURE = -1001,
    /* PSImageICC2QImage: any failure in the colour conversion. */
    VELORN_COLOUR_FAILURE = -500
};

/* ---- Pixel formats --------------------------------------------------------------------------- */

/* Host pixels are interleaved. In the four-channel formats the first element of a pixel is alpha.
 * The codes 2 and 4 are invalid. */
enum {
    psC3U8 = 1,  /* R G B, 8 bits each */
    psC3U16 = 3, /* R G B, 16 bits each, 0..32768 */
    psC4U8 = 5,  /* A R G B, 8 bits each */
    psC4U16 = 6, /* A R G B, 16 bits each, 0..32768 */
    psC1U8 = 7,  /* grey, 8 bits */
    psC1U16 = 8  /* grey, 16 bits, 0..32768 */
};

/* ---- Records --------------------------------------------------------------------------------- */

/* Receives the progress of a call: `current` of `limit` units.
 *
 * Return 0 to cancel, any other value to continue. Only ornDeblurSharpen can be cancelled; its
 * callback runs on the thread that made the call. ornBlurEstimate ignores the result and may call
 * back on another thread. */
typedef int32_t(VELORN_CALL* ProgressCallback)(int32_t current, int32_t limit, void* userData);

/* The progress account of the host. The library reads and updates it during a call. */
typedef struct ProgressRecord {
    int32_t total;             /* progress units that the call spends */
    int32_t limit;             /* upper bound of `current`; second argument of the callback */
    ProgressCallback callback; /* may be null */
    void* userData;            /* passed to the callback; if null, the callback is never called */
    int32_t current;           /* running counter: the library adds to it and does not reset it */
} ProgressRecord;

/* Source and target of ornDeblurSharpen: two separate buffers of equal size with three interleaved
 * channels (red, green, blue). Steps are positive and at least one row long. The library reads the
 * target again where tiles overlap, so nothing else may change it during the call. */
typedef struct ImageRecord {
    int32_t format;     /* 1: 8 bits per channel; any other value: 16 bits per channel */
    const void* source; /* first pixel of the source */
    int32_t sourceStep; /* bytes from one source row to the next */
    void* target;       /* first pixel of the target, same pixel type as the source */
    int32_t targetStep; /* bytes from one target row to the next */
    int32_t width;      /* pixels per row of both images, at least 1 */
    int32_t height;     /* rows of both images, at least 1 */
} ImageRecord;

/* An image that is only read. */
typedef struct PlaneRecord {
    int32_t format;   /* psC3U8 and the other codes */
    const void* data; /* first pixel */
    int32_t step;     /* bytes from one row to the next */
    int32_t width;    /* pixels per row */
    int32_t height;   /* rows */
} PlaneRecord;

/* A blur kernel: `width` times `height` floats, row by row without padding. The sides are odd and
 * the values sum to 1. The centre is always (width / 2, height / 2): the library writes the anchors
 * for the host but never reads them. */
typedef struct KernelRecord {
    int32_t width;   /* columns */
    int32_t height;  /* rows */
    int32_t anchorX; /* centre column */
    int32_t anchorY; /* centre row */
    float* data;     /* host memory, large enough for every value that a call writes */
} KernelRecord;

/* Source and target ICC profile, each a block of memory. A side without a profile (null pointer or
 * size below 1) is sRGB. There is no colour management at all when both pointers are null or both
 * sizes are below 1. */
typedef struct PSProfilesRecord {
    const void* inData;  /* profile of the image */
    int32_t inSize;      /* bytes */
    const void* outData; /* profile of the display */
    int32_t outSize;     /* bytes */
} PSProfilesRecord;

/* ---- Restoration ----------------------------------------------------------------------------- */

/* Deblurs and sharpens image->source into image->target.
 *
 * progress        must not be null (a null pointer crashes); its callback may be null.
 * kernel          the blur. Keep its larger side below (tile - 48) / 4. The tile side is 256 if the
 *                 larger image side is at most 256, 1024 if it is 513 to 1024, and 512 otherwise.
 *                 Larger kernels fail with VELORN_TILE_GAP or VELORN_NO_PIXELS. Kernels just below
 *                 the bound are slow, because the tiles become small and numerous. A kernel whose
 *                 values do not sum to 1 scales the brightness.
 * deconvolve      0 skips the deconvolution. The kernel then only sets a margin: its data may be
 *                 null and its sides may be 0. Any other value runs it.
 * deconvLambda    strength of the deconvolution. Higher values follow the kernel more closely and
 *                 increase detail and noise. The best value depends on the noise of the image; see
 *                 docs/default-strength.md for a measured rule.
 * deconvAlpha     0..1 (clamped), exponent of the gradient prior. Low values favour few, sharp
 *                 edges; high values preserve soft transitions.
 * limitStrength   0..1. At 1 no pixel exceeds the values of its neighbourhood before and after the
 *                 deconvolution; lower values allow more overshoot. Below 0.1 the limiter is off.
 * edgeRadius      pixels, base radius of the edge sharpening. Below 0.4 the stage leaves the image
 *                 unchanged, except that a radius of exactly 0 turns the image black.
 * edgeSlope,      edge sharpening runs if either exceeds 1.01. The gain multiplies all detail; 1
 * edgeGain        leaves it unchanged. The slope increases the gain near edges; 0 adds nothing.
 * edgeFloor       at least 0.00001 (raised to it), on a scale where 1 is white. Higher values keep
 *                 the effect of the slope away from smooth areas.
 * detailGain,     detail enhancement runs if either exceeds 0.01. It changes the luminance and
 * detailGamma     preserves edges. A gain above 0 multiplies detail by 1 + 3 * gain, a gain below 0
 *                 by 1 + gain. A gamma above 0 raises fine detail and restrains strong detail; a
 *                 gamma below 0 does the reverse.
 *
 * NaN and infinite settings are legal and never crash.
 *
 * Returns VELORN_OK; VELORN_CANCELLED; VELORN_TEXT_FAILURE for a null image or kernel, null pixels,
 * a step shorter than a row, a negative kernel side or, with deconvolution, a kernel without
 * elements or data; VELORN_NO_PIXELS; VELORN_TILE_GAP; VELORN_SMOOTHER_MEMORY;
 * VELORN_GUARD_DAMAGED; VELORN_FAILURE. After cancellation or failure, finished target rows remain
 * in the target. */
VELORN_API int32_t VELORN_CALL ornDeblurSharpen(ProgressRecord* progress, ImageRecord* image,
                                                KernelRecord* kernel, int32_t deconvolve,
                                                float deconvLambda, float deconvAlpha,
                                                float limitStrength, float edgeRadius,
                                                float edgeSlope, float edgeGain, float edgeFloor,
                                                float detailGain, float detailGamma);

/* Estimates the blur kernel of an image blindly, from the image alone.
 *
 * progress   must not be null; its callback may be null. The call cannot be cancelled.
 * image      psC3U8; any other format code means three 16-bit channels. The step is at least one
 *            row long.
 * kernel     width and height give the size of the kernel to estimate. The call writes that many
 *            floats to data, without padding, and leaves the anchors unchanged. Use odd sides: for
 *            an even side the call estimates a kernel that is one larger and drops its last row or
 *            column. If a side is below 1, the call sets the first four fields of the record to 0
 *            and returns VELORN_OK. Time and memory grow quickly with the size: the call needs more
 *            than 12 * (width * height)^2 bytes at once, that is 11 MB for 31 by 31 and 189 MB for
 *            63 by 63. The call reads the record once, before its first callback.
 * strength   0.2..2: standard deviation, in pixels, of a Gaussian that smooths the last edge image.
 *            Values below 0.2 turn the smoothing off; values above 2 act as 2.
 *
 * The estimated kernel has no negative values. Its values sum to 1, or to at most 1 if an even side
 * lost a row or column. It is the same for any number of threads. Two cases need attention:
 *
 *   An image without edges, or one too small for the kernel, gives a kernel of NaN values, and the
 *   call still returns VELORN_OK. Test data[0] == data[0] before you use the kernel: NaN values
 *   destroy the restored image.
 *   The kernel of an asymmetric blur may be rotated by 180 degrees, because the image does not
 *   determine its orientation. Restore a part of the image with both and keep the better one.
 *
 * Returns VELORN_OK; VELORN_TEXT_FAILURE for a null record, null data or a step shorter than a row;
 * VELORN_NO_PIXELS for an image without columns or rows; VELORN_FAILURE. After a failure the
 * kernel data is unchanged. */
VELORN_API int32_t VELORN_CALL ornBlurEstimate(ProgressRecord* progress, PlaneRecord* image,
                                               KernelRecord* kernel, float strength);

/* Creates an analytic kernel and fills the whole record. The host allocates data for the sizes
 * below. Sizes and lengths are in pixels.
 *
 * type 0   Gaussian. paramA is the standard deviation, paramB is ignored. The size is n by n with
 *          n = 2 * trunc(3 * paramA + 0.5) + 1. A deviation of 0 gives a single NaN value.
 * type 1   Disc (defocused lens). paramA is the radius, paramB is ignored. The size is n by n with
 *          n = 2 * trunc(paramA + 0.5) + 1. A radius of 0 gives a single NaN value.
 * type 2   Straight motion. paramA is the length, paramB the angle in degrees; positive angles rise
 *          to the right. The size is at most n by n with
 *          n = 2 * trunc((max(1, paramA) + 1) / 2) + 1. Lengths below 1 act as 1. An angle that is
 *          not finite gives a single NaN value.
 *
 * Returns VELORN_OK; VELORN_BAD_ARGUMENT for a null record, null data or an unknown type, with the
 * record unchanged; VELORN_FAILURE for a kernel too large to allocate or a negative size. */
VELORN_API int32_t VELORN_CALL ornCreateKernel(int32_t type, float paramA, float paramB,
                                               KernelRecord* kernel);

/* Returns the text of the last guarded call if that call returned VELORN_TEXT_FAILURE, otherwise an
 * empty text. Never null. The text remains valid until the next guarded call, which clears it even
 * if it is refused. The text may end with one stale character of an earlier text. */
VELORN_API const char* VELORN_CALL getErrMsg(void);

/* Have no effect and return 0. They exist for hosts that call them. setDebugTrace reads no
 * argument. */
VELORN_API int32_t VELORN_CALL velSetupLib(int32_t first, int32_t second);
#if defined(__cplusplus) || (defined(__STDC_VERSION__) && __STDC_VERSION__ >= 202311L)
VELORN_API int32_t VELORN_CALL setDebugTrace(...);
#else
VELORN_API int32_t VELORN_CALL setDebugTrace();
#endif

/* ---- Display and scales (no guard, no error text, any thread) -------------------------------- */

/* Converts a colour image to display pixels: bytes blue, green, red, 255. Sixteen-bit values are
 * reduced by truncation; white becomes 255.
 *
 * image     psC3U8 or psC3U16. Four-channel formats are accepted, but the call reads three elements
 *           per pixel for every format, so their pixels come out wrong.
 * dst       first pixel of the display buffer: dstWidth by dstHeight pixels of four bytes
 * dstStep   bytes from one display row to the next
 * scale     0.99 to 1.01, or NaN: the call copies the overlap of image and buffer and leaves the
 *           rest of the buffer unchanged. Any other scale: the call resamples with linear
 *           interpolation and writes the whole buffer. It writes black where the scaled image does
 *           not reach, and everywhere if the scale is not above 0.
 *
 * Returns VELORN_OK; VELORN_BAD_ARGUMENT, with nothing written, for a format without three colours
 * or a null pointer; VELORN_DISPLAY_FAILURE. */
VELORN_API int32_t VELORN_CALL PSImage2QImage(PlaneRecord* image, void* dst, int32_t dstStep,
                                              int32_t dstWidth, int32_t dstHeight, float scale);

/* Runs PSImage2QImage, then converts every pixel of the buffer from the source profile to the
 * target profile, relative colorimetric. The alpha bytes are unchanged. The conversion is skipped
 * if `profiles` is null or the record asks for no colour management; see PSProfilesRecord. Profiles
 * must be RGB profiles. Every call reads them again.
 *
 * Returns the result of PSImage2QImage if that is not VELORN_OK; VELORN_OK; 0 if a profile or the
 * transform was refused, with the image shown without colour management; VELORN_COLOUR_FAILURE. */
VELORN_API int32_t VELORN_CALL PSImageICC2QImage(PSProfilesRecord* profiles, PlaneRecord* image,
                                                 void* dst, int32_t dstStep, int32_t dstWidth,
                                                 int32_t dstHeight, float scale);

/* Converts one channel from 8 bits to the 15-bit scale: out = (v + 1) * 128. Black becomes 128 and
 * white 32768. Steps count bytes. Always returns 1. A null pointer or a size below 1 leaves the
 * target unchanged. */
VELORN_API int32_t VELORN_CALL psC1U8toU15(const void* src, int32_t srcStep, int32_t width,
                                           int32_t height, void* dst, int32_t dstStep);

/* Converts one channel from the 15-bit scale to 8 bits: the exact inverse of psC1U8toU15 on its 256
 * levels. Other values are rounded to the nearest level, ties to even; values above white become
 * 255. Always returns 1. A null pointer, a size below 1 or exhausted memory leaves the target
 * unchanged. */
VELORN_API int32_t VELORN_CALL psC1U15toU8(const void* src, int32_t srcStep, int32_t width,
                                           int32_t height, void* dst, int32_t dstStep);

#ifdef __cplusplus
}
#endif

#endif
