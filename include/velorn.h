/* velorn: removes blur from photographs.
 *
 * The library restores pictures from a known or unknown blur:
 *
 *   velornRestore                       restores a picture, or a region of it
 *   velornMakeKernel,
 *   velornKernelFromValues              make a blur kernel
 *   velornFindKernel                    finds the blur kernel in the picture
 *   velornFindCandidates                finds it and the kernels that came close
 *   velornNoise                         measures the noise of a picture
 *
 * A host that knows the blur needs two calls:
 *
 *   VelornKernel* kernel = NULL;
 *   velornMakeKernel(VELORN_BLUR_DISC, 4.0f, 0.0f, &kernel);
 *   velornRestore(&picture, &picture, &kernel, 1, NULL, NULL);
 *   velornFreeKernel(kernel);
 *
 * Memory. The host owns all pixels. The library keeps no pointer to them after a call returns.
 * Kernels belong to the library: free them with velornFreeKernel.
 *
 * Failures. Functions return a VelornStatus. After any status but VELORN_STATUS_OK,
 * velornLastMessage explains the failure. Targets and reports are unchanged then, and kernel
 * pointers are null.
 *
 * Threads. There is no global state. Any number of threads may call any functions at once; calls
 * may share source pictures and kernels. A call works on threads of its own and ends them before it
 * returns; progress callbacks run on the calling thread. Results do not depend on the number of
 * threads or on the processor.
 *
 * Records. Settings and reports begin with their size. The host writes `size = sizeof record`
 * before it passes the record to any function. Later versions append fields only; a library that
 * knows more fields than the host uses their defaults, and a library that knows fewer refuses the
 * record. */
#ifndef VELORN_H
#define VELORN_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#if defined(VELORN_BUILD)
#define VELORN_PUBLIC __declspec(dllexport)
#else
#define VELORN_PUBLIC __declspec(dllimport)
#endif
#else
#define VELORN_PUBLIC __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Status ---------------------------------------------------------------------------------- */

typedef enum VelornStatus {
    VELORN_STATUS_OK = 0,
    /* The progress callback cancelled the call. */
    VELORN_STATUS_CANCELLED = 1,
    /* A null pointer, a record of unknown size, or a value outside its range. The message names the
     * argument and its limits. */
    VELORN_STATUS_INVALID_ARGUMENT = 2,
    /* The kernel is larger than VELORN_LARGEST_KERNEL_SIDE, or the picture is smaller than the
     * kernel. */
    VELORN_STATUS_KERNEL_TOO_LARGE = 3,
    /* velornFindKernel: the picture is too small or has too few edges to find a kernel. */
    VELORN_STATUS_NO_KERNEL = 4,
    VELORN_STATUS_OUT_OF_MEMORY = 5,
    /* A defect of the library. */
    VELORN_STATUS_INTERNAL = 6
} VelornStatus;

/* The reason why the last call on this thread that returns a VelornStatus failed; an empty text
 * after a call that succeeded. One line of English in ASCII. Valid until the next such call on this
 * thread. */
VELORN_PUBLIC const char* velornLastMessage(void);

/* The version of the library, for example "1.1.0". */
VELORN_PUBLIC const char* velornVersion(void);

/* ---- Pictures -------------------------------------------------------------------------------- */

typedef enum VelornSamples {
    VELORN_SAMPLES_U8 = 1,  /* 0..255 */
    VELORN_SAMPLES_U16 = 2, /* 0..65535, native byte order */
    VELORN_SAMPLES_F32 = 3  /* 0 is black, 1 is white; values outside are legal */
} VelornSamples;

/* Pixels in the host's memory: interleaved channels, rows at a constant distance.
 *
 * The colour channels are the channels without alpha. One is grey and restored as one plane. Three
 * are red, green and blue and restored as luminance and chroma. Any other number is restored
 * channel by channel. Alpha is copied.
 *
 * Samples may have any alignment. Floats that are not finite are read as 0. */
typedef struct VelornPicture {
    void* data;          /* first sample of the top left pixel; a source is only read */
    ptrdiff_t rowStride; /* bytes from a row to the row below it, at least those of a row in either
                          * direction; negative where the rows are stored from bottom to top */
    int32_t width;       /* pixels, 1..2^30 */
    int32_t height;      /* rows, 1..2^30 */
    int32_t channels;    /* 1..4, with alpha */
    int32_t hasAlpha;    /* not 0: the last channel is alpha; needs at least 2 channels */
    int32_t samples;     /* VelornSamples */
} VelornPicture;

/* A rectangle of pixels. */
typedef struct VelornRegion {
    int32_t x;
    int32_t y;
    int32_t width;
    int32_t height;
} VelornRegion;

/* Receives the progress of a call: `done` rises from 0 to 1. Called on the calling thread, at least
 * ten times per second. Return 0 to cancel the call, any other value to continue. */
typedef int32_t (*VelornProgress)(double done, void* userData);

/* ---- Kernels --------------------------------------------------------------------------------- */

/* A blur kernel: how the light of one point spreads. Its sides are odd, its centre is in the
 * middle, its values sum to 1. The blurred picture is the convolution of the sharp picture with the
 * kernel. Kernels never change; any number of threads may use one at once. */
typedef struct VelornKernel VelornKernel;

enum { VELORN_LARGEST_KERNEL_SIDE = 511 };

typedef enum VelornBlur {
    VELORN_BLUR_GAUSSIAN = 0, /* extent: standard deviation in pixels */
    VELORN_BLUR_DISC = 1,     /* a lens out of focus; extent: radius in pixels */
    VELORN_BLUR_MOTION = 2    /* straight motion; extent: length in pixels */
} VelornBlur;

/* Makes the kernel of an analytic blur.
 *
 * blur     VelornBlur
 * extent   pixels, above 0; the kernel must not exceed VELORN_LARGEST_KERNEL_SIDE
 * angle    motion only: degrees, counter-clockwise from the horizontal; finite
 * kernel   receives the kernel; NULL after a failure */
VELORN_PUBLIC VelornStatus velornMakeKernel(int32_t blur, float extent, float angle,
                                            VelornKernel** kernel);

/* Makes a kernel from values, row by row without padding, and scales their sum to 1. Sides are odd.
 * Values are finite and have a positive sum. */
VELORN_PUBLIC VelornStatus velornKernelFromValues(const float* values, int32_t width,
                                                  int32_t height, VelornKernel** kernel);

/* The sides and the values of a kernel; 0 and NULL for a null kernel. The values live as long as
 * the kernel. */
VELORN_PUBLIC int32_t velornKernelWidth(const VelornKernel* kernel);
VELORN_PUBLIC int32_t velornKernelHeight(const VelornKernel* kernel);
VELORN_PUBLIC const float* velornKernelValues(const VelornKernel* kernel);

/* Makes a kernel rotated by 180 degrees. A picture of unknown blur does not always show which of
 * the two orientations an asymmetric blur had. */
VELORN_PUBLIC VelornStatus velornRotateKernel(const VelornKernel* kernel, VelornKernel** rotated);

/* Frees a kernel; ignores null. */
VELORN_PUBLIC void velornFreeKernel(VelornKernel* kernel);

/* ---- Restoration ----------------------------------------------------------------------------- */

/* The value of a float setting that the library chooses. */
#define VELORN_AUTOMATIC (-1.0f)

typedef enum VelornLight {
    /* Restores in light or in display values, whichever explains the picture better. */
    VELORN_LIGHT_AUTOMATIC = 0,
    VELORN_LIGHT_LINEAR = 1, /* undoes the picture's tone curve, restores, applies the curve */
    VELORN_LIGHT_DISPLAY = 2 /* restores the samples as they are */
} VelornLight;

typedef enum VelornQuality {
    /* Deconvolution, then a quick second pass on luminance that removes noise and keeps texture. */
    VELORN_QUALITY_NORMAL = 0,
    /* A longer second pass, on chroma too: up to half a decibel better, two to three times as slow
     * as normal. */
    VELORN_QUALITY_BEST = 1,
    /* Deconvolution alone. Strength and alpha have their full effect: a second pass removes noise
     * that a high strength lets through. */
    VELORN_QUALITY_FAST = 2
} VelornQuality;

typedef struct VelornRestoreSettings {
    uint32_t size; /* sizeof(VelornRestoreSettings) */

    /* Strength of the deconvolution, above 0, or VELORN_AUTOMATIC (default). Higher values follow
     * the kernel more closely and increase detail and noise. Typical values are 500 to 50000. */
    float strength;
    /* The same for chroma: the inverse of the weight of its prior. Above 0, or VELORN_AUTOMATIC. */
    float chromaStrength;
    /* Exponent of the gradient prior, 0..1, or VELORN_AUTOMATIC (default). Low values favour few,
     * sharp edges; high values preserve soft transitions. */
    float alpha;
    /* Overshoot limiter, 0..1, or VELORN_AUTOMATIC (default). At 1 no pixel exceeds its
     * neighbourhood before and after the deconvolution. Below 0.1 the limiter is off. */
    float limit;

    /* Edge sharpening; runs if the slope is above 0 or the gain above 1.01. */
    float edgeRadius; /* pixels, 0.1..10, default 0.85; off below 0.4 */
    float edgeSlope;  /* increases the gain near edges, 0..20, default 0 */
    float edgeGain;   /* multiplies all detail, 0..20, default 1 */
    float edgeFloor;  /* keeps the slope away from smooth areas, 0.00001..1, default 0.005 */

    /* Detail enhancement; runs if either exceeds 0.01. */
    float detailGain;  /* contrast of texture, -1..3, default 0 */
    float detailGamma; /* above 0 raises faint texture, -1..3, default 0 */

    /* Standard deviation of the luminance noise in levels of 255, at least 0, on which automatic
     * settings rest, or VELORN_AUTOMATIC (default): measured. */
    float noise;

    int32_t light;          /* VelornLight, default automatic */
    int32_t quality;        /* VelornQuality, default normal */
    int32_t continueFrame;  /* estimate what lies beyond the frame; default 1 */
    int32_t recoverClipped; /* estimate what clipped pixels hide; default 1 */

    /* The part of the source to restore. A width of 0 (default) means all. The result has exactly
     * the bytes that the restoration of the whole has there. Automatic settings look at the whole
     * picture, whatever the region. */
    VelornRegion region;

    /* Largest number of threads; 0 (default): one for each processor that the process may use. */
    int32_t threads;

    VelornProgress progress; /* may be null */
    void* userData;          /* passed to `progress` */

    /* The ICC profile of the picture, for its tone curve: of red, green and blue with a matrix and
     * curves, or grey. Null: sRGB. With any other profile, automatic light is display light, and
     * VELORN_LIGHT_LINEAR fails with VELORN_STATUS_INVALID_ARGUMENT. Display light does not read
     * it. */
    const void* profile;
    size_t profileSize;
} VelornRestoreSettings;

/* Writes the defaults. `settings->size` must be set.
 * Fails with VELORN_STATUS_INVALID_ARGUMENT for a null record or an unknown size. */
VELORN_PUBLIC VelornStatus velornRestoreDefaults(VelornRestoreSettings* settings);

/* What a restoration found and did. */
typedef struct VelornRestoreReport {
    uint32_t size;          /* sizeof(VelornRestoreReport), set by the host */
    float noise;            /* noise of the luminance, in levels of 255 */
    float strength;         /* as used; 0 without deconvolution */
    float chromaStrength;   /* as used; 0 without chroma */
    float alpha;            /* as used */
    float limit;            /* as used */
    int32_t light;          /* as used: VELORN_LIGHT_LINEAR or VELORN_LIGHT_DISPLAY */
    int32_t tiles;          /* tiles restored */
    double clippedShare;    /* share of the region's pixels treated as clipped, 0..1 */
    double secondsAnalysis; /* noise, automatic settings */
    double secondsTiles;    /* restoration */
    double secondsTotal;
} VelornRestoreReport;

/* Restores `source` into `target`.
 *
 * source       the blurred picture
 * target       receives the restoration. It has the size of the region (of the source without a
 *              region) and the channels of the source; its sample type may differ. It may overlap
 *              the source in any way.
 * kernels      the blur: one kernel for all colour channels, or one for each. If all of them are
 *              of a single pixel, nothing is deconvolved.
 * kernelCount  0, 1 or the number of colour channels. With 0 nothing is deconvolved; sharpening and
 *              detail run.
 * settings     null: the defaults
 * report       may be null
 *
 * The target is written after all else has succeeded; cancelled and failed calls leave it
 * unchanged. */
VELORN_PUBLIC VelornStatus velornRestore(const VelornPicture* source, const VelornPicture* target,
                                         const VelornKernel* const* kernels, int32_t kernelCount,
                                         const VelornRestoreSettings* settings,
                                         VelornRestoreReport* report);

/* ---- Noise ----------------------------------------------------------------------------------- */

typedef struct VelornNoiseReport {
    uint32_t size;   /* sizeof(VelornNoiseReport), set by the host */
    float luminance; /* standard deviation in levels of 255; of the mean of two or four channels */
    float channels[4]; /* the same for each colour channel; 0 for others */
} VelornNoiseReport;

/* Measures the noise of a picture. Errors of JPEG compression count as noise. Results are at least
 * the rounding of the samples: 0.29 for a channel of 8 bits. Large pictures are measured in parts,
 * in less than 0.1 seconds. */
VELORN_PUBLIC VelornStatus velornNoise(const VelornPicture* picture, VelornNoiseReport* report);

/* ---- Blind search ---------------------------------------------------------------------------- */

typedef struct VelornFindSettings {
    uint32_t size;     /* sizeof(VelornFindSettings) */
    int32_t maxWidth;  /* the kernel has at most these sides, 3..VELORN_LARGEST_KERNEL_SIDE; */
    int32_t maxHeight; /* 0 (default): as large as the picture shows */
    int32_t partSide;  /* look at a square of this side, at least 64; 0 (default): chosen */
    /* Standard deviation in pixels of a Gaussian that smooths the edges which the kernel is fitted
     * to at last, 0..2, default 0. Higher values give smoother, narrower kernels. */
    float smoothing;
    int32_t threads; /* as in VelornRestoreSettings */
    VelornProgress progress;
    void* userData;

    /* Look at this part of the picture only. A width of 0 (default) means all of it. */
    VelornRegion region;
    /* A kernel to refine, or null (default). The search then starts from this kernel and finds its
     * details; candidates are the refined kernel and the kernel itself. The kernel must stay valid
     * until the call returns. Its sides are at most 71 and a third of the shorter side of the
     * picture, or of the region; `maxWidth` and `maxHeight` have no effect. */
    const VelornKernel* start;
} VelornFindSettings;

/* Writes the defaults. `settings->size` must be set. */
VELORN_PUBLIC VelornStatus velornFindDefaults(VelornFindSettings* settings);

/* The blur that a kernel is, or resembles. */
typedef enum VelornKernelKind {
    VELORN_KIND_NONE = 0,     /* the kernel of a single pixel: the picture is not blurred */
    VELORN_KIND_GAUSSIAN = 1, /* as VELORN_BLUR_GAUSSIAN */
    VELORN_KIND_DISC = 2,     /* as VELORN_BLUR_DISC */
    VELORN_KIND_MOTION = 3,   /* as VELORN_BLUR_MOTION */
    VELORN_KIND_FREE = 4 /* anything else: camera shake, curved motion, several blurs at once */
} VelornKernelKind;

typedef struct VelornFindReport {
    uint32_t size; /* sizeof(VelornFindReport), set by the host */
    /* The probability that a restoration with the kernel is better than the picture, 0..1. */
    float confidence;
    float agreement; /* likeness of the kernel and those of the other candidates, 0..1 */
    float misfit;    /* mean squared residual of the restoration, in units of the noise variance */

    int32_t kind; /* VelornKernelKind */
    /* Pixels: the extent as for velornMakeKernel; of VELORN_KIND_FREE the longer side of the
     * weights above 0; of VELORN_KIND_NONE 0. */
    float extent;
    float angle; /* of VELORN_KIND_MOTION: degrees as for velornMakeKernel, above -90, at most 90 */
    /* How well the kernel explains the picture, compared with the other candidates; smaller is
     * better. Scores of different pictures or settings cannot be compared. */
    float score;
    int32_t parts; /* parts of the picture that were looked at */
    /* Likeness of the kernels of these parts, 0..1; 1 for one part. A low value says that the blur
     * differs across the picture. */
    float partAgreement;
    int32_t candidates; /* kernels that the call has found, at most VELORN_MOST_CANDIDATES */
} VelornFindReport;

/* Finds the kernel of a picture of unknown blur.
 *
 * The kernel is centred: a restoration does not move the picture. It has at most 71 columns and
 * rows. Found kernels are not exact: with automatic strength a restoration uses less of it where
 * they are neither a Gaussian, a disc nor a line, and mixes its result with the picture where the
 * confidence is low. A given strength is used as it is, and a kernel made from the values of a
 * found one counts as exact. A picture with sharp edges has a kernel of a single pixel, and a
 * confidence below 0.5.
 *
 * Fails with VELORN_STATUS_NO_KERNEL for a picture (or a region) without edges or with fewer than
 * 32 columns or rows, and with VELORN_STATUS_KERNEL_TOO_LARGE for a start that is too large.
 * `settings` null: the defaults; `report` may be null. */
VELORN_PUBLIC VelornStatus velornFindKernel(const VelornPicture* picture,
                                            const VelornFindSettings* settings,
                                            VelornKernel** kernel, VelornFindReport* report);

/* Calls of velornFindCandidates find at most this many kernels. */
enum { VELORN_MOST_CANDIDATES = 32 };

/* Finds the kernels that a picture of unknown blur may have, so that a person can choose.
 *
 * picture    as for velornFindKernel
 * settings   as for velornFindKernel
 * kernels    receives the best kernels, best first, in its first elements, and null in the others.
 *            The first one is that of velornFindKernel. The host frees each with velornFreeKernel.
 *            All are null after a failure.
 * reports    receives a report for each kernel; null, or `capacity` records of the same size.
 *            Records without a kernel stay unchanged, all do after a failure.
 * capacity   elements of `kernels`, at least 1
 * count      receives the number of kernels, at most `capacity`; 0 after a failure. The reports say
 *            how many the call has found.
 *
 * Takes as long as velornFindKernel and fails as it does. */
VELORN_PUBLIC VelornStatus velornFindCandidates(const VelornPicture* picture,
                                                const VelornFindSettings* settings,
                                                VelornKernel** kernels, VelornFindReport* reports,
                                                int32_t capacity, int32_t* count);

/* ---- Local blur ------------------------------------------------------------------------------ */

/* Kernels for a blur that differs across the picture: rotation of the camera, depth, a moving
 * subject. The picture is divided into equal cells. Each kernel is the blur at the middle of its
 * cell; between the middles the blur changes linearly, beyond the outer ones it stays the same. All
 * colour channels have the same blur. Grids never change; any number of threads may use one at
 * once. */
typedef struct VelornKernelGrid VelornKernelGrid;

enum { VELORN_LARGEST_GRID_SIDE = 16 };

/* Makes a grid.
 *
 * kernels  columns * rows kernels, row by row. The grid copies them. Neighbours must agree in
 *          position: kernels that are moved against each other give double edges.
 * columns  1..VELORN_LARGEST_GRID_SIDE
 * rows     1..VELORN_LARGEST_GRID_SIDE
 * grid     receives the grid; NULL after a failure */
VELORN_PUBLIC VelornStatus velornMakeKernelGrid(const VelornKernel* const* kernels, int32_t columns,
                                                int32_t rows, VelornKernelGrid** grid);

/* Finds the kernels of a picture of unknown blur.
 *
 * First finds one kernel for the whole picture, as velornFindKernel does; `report` is about it.
 * Then finds the kernel of each cell, starting from that one, moves neighbouring kernels onto each
 * other, and smooths them. Cells without edges take the kernels of their neighbours. Where the
 * cells do not differ reliably, the grid has one cell.
 *
 * Fails as velornFindKernel does. `settings` null: the defaults; `report` may be null. */
VELORN_PUBLIC VelornStatus velornFindKernelGrid(const VelornPicture* picture,
                                                const VelornFindSettings* settings,
                                                VelornKernelGrid** grid, VelornFindReport* report);

/* The columns and rows of a grid; 0 for null. */
VELORN_PUBLIC int32_t velornKernelGridColumns(const VelornKernelGrid* grid);
VELORN_PUBLIC int32_t velornKernelGridRows(const VelornKernelGrid* grid);

/* The kernel of a cell; NULL for a null grid and cells outside of it. Lives as long as the grid; is
 * not freed. */
VELORN_PUBLIC const VelornKernel* velornKernelGridCell(const VelornKernelGrid* grid, int32_t column,
                                                       int32_t row);

typedef struct VelornCellReport {
    uint32_t size;    /* sizeof(VelornCellReport), set by the host */
    int32_t isFound;  /* 1: estimated in the cell; 0: taken from elsewhere, or made by the host */
    float confidence; /* 0..1: how far the kernel can be trusted; 1 for kernels of the host */
    float likeness;   /* of the kernel and that of the whole picture, 0..1; 1 for kernels of the
                       * host */
} VelornCellReport;

/* Reports about a cell. */
VELORN_PUBLIC VelornStatus velornKernelGridReport(const VelornKernelGrid* grid, int32_t column,
                                                  int32_t row, VelornCellReport* report);

/* Frees a grid; ignores null. */
VELORN_PUBLIC void velornFreeKernelGrid(VelornKernelGrid* grid);

/* Restores `source` into `target` with a kernel for each place; in all else like velornRestore.
 * Automatic settings are chosen once for the picture. A grid whose kernels are all the same gives
 * the bytes of velornRestore. Different kernels take longer: tiles are smaller. */
VELORN_PUBLIC VelornStatus velornRestoreLocal(const VelornPicture* source,
                                              const VelornPicture* target,
                                              const VelornKernelGrid* grid,
                                              const VelornRestoreSettings* settings,
                                              VelornRestoreReport* report);

#ifdef __cplusplus
}
#endif

#endif
