/* A host in C: loads the library, creates a kernel, deblurs a small image with a progress display,
 * cancels a call, and prints the text of a failure.
 *
 *     minimal_host [LIBRARY]
 *
 * This host loads the library at run time, like a program for which the library is optional, or a
 * plug-in that ships it. A program that always has the library links to it, needs no Library record
 * and calls the functions by name.
 *
 * Exit status: 0 if every step succeeds, 1 otherwise. */
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <velorncore10.h>

enum { kWidth = 160, kHeight = 120, kChannels = 3, kStep = kWidth * kChannels };
enum { kDisc = 1 };

static const float kRadius = 2.0f;

/* ---- The library ------------------------------------------------------------------------------
 */

/* The functions that this host calls, with their types from the header. */
typedef struct Library {
    void* handle;
    int32_t(VELORN_CALL* createKernel)(int32_t, float, float, KernelRecord*);
    int32_t(VELORN_CALL* deblurSharpen)(ProgressRecord*, ImageRecord*, KernelRecord*, int32_t,
                                        float, float, float, float, float, float, float, float,
                                        float);
    const char*(VELORN_CALL* errorText)(void);
} Library;

/* Finds one function. C does not convert object pointers to function pointers, therefore the
 * address is copied. */
static int findFunction(const Library* library, const char* name, void* function) {
    void* const found = dlsym(library->handle, name);
    if (found == NULL) {
        fprintf(stderr, "the library has no %s\n", name);
        return 0;
    }
    memcpy(function, &found, sizeof found);
    return 1;
}

static int loadLibrary(Library* library, const char* path) {
    /* Never evaluated: the compiler checks that the types above match those of the header. */
    (void)sizeof(library->createKernel == ornCreateKernel);
    (void)sizeof(library->deblurSharpen == ornDeblurSharpen);
    (void)sizeof(library->errorText == getErrMsg);

    library->handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library->handle == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 0;
    }
    return findFunction(library, "ornCreateKernel", &library->createKernel) &&
           findFunction(library, "ornDeblurSharpen", &library->deblurSharpen) &&
           findFunction(library, "getErrMsg", &library->errorText);
}

/* ---- The picture ------------------------------------------------------------------------------
 */

/* Red, green and blue interleaved, row after row. */
typedef struct Picture {
    unsigned char samples[kHeight * kStep];
} Picture;

/* Draws tiles of many shades. */
static void draw(Picture* picture) {
    int x, y, c;
    for (y = 0; y < kHeight; ++y) {
        for (x = 0; x < kWidth; ++x) {
            const int shade = 40 + ((x / 11) * 7 + (y / 9) * 5) * 11 % 170;
            for (c = 0; c < kChannels; ++c) {
                picture->samples[y * kStep + x * kChannels + c] = (unsigned char)(shade - 10 * c);
            }
        }
    }
}

static int clamped(int value, int count) {
    return value < 0 ? 0 : value < count ? value : count - 1;
}

/* Convolves `sharp` with the kernel, like a defocused lens. The border pixels are replicated. */
static void blur(const Picture* sharp, const KernelRecord* kernel, Picture* blurred) {
    int i;
    for (i = 0; i < kHeight * kStep; ++i) {
        const int x = i % kStep / kChannels;
        const int y = i / kStep;
        float sum = 0.5f;
        int row, column;
        for (row = 0; row < kernel->height; ++row) {
            for (column = 0; column < kernel->width; ++column) {
                const int fromX = clamped(x + kernel->width / 2 - column, kWidth);
                const int fromY = clamped(y + kernel->height / 2 - row, kHeight);
                sum += kernel->data[row * kernel->width + column] *
                       sharp->samples[fromY * kStep + fromX * kChannels + i % kChannels];
            }
        }
        blurred->samples[i] = (unsigned char)sum;
    }
}

static double meanDistance(const Picture* a, const Picture* b) {
    double sum = 0.0;
    int i;
    for (i = 0; i < kHeight * kStep; ++i) {
        sum += abs(a->samples[i] - b->samples[i]);
    }
    return sum / (kHeight * kStep);
}

/* ---- The calls --------------------------------------------------------------------------------
 */

/* Fills `kernel` with a disc. The host allocates the data; the header gives the size. */
static int makeDisc(const Library* library, KernelRecord* kernel) {
    const int side = 2 * (int)(kRadius + 0.5f) + 1;
    memset(kernel, 0, sizeof *kernel);
    kernel->data = malloc((size_t)side * (size_t)side * sizeof *kernel->data);
    return kernel->data != NULL && library->createKernel(kDisc, kRadius, 0.0f, kernel) == VELORN_OK;
}

/* The user data of the progress callback. In a larger host: a window with a bar and a button. */
typedef struct ProgressWindow {
    int isCancelled; /* set when the user cancels */
    int32_t shown;   /* last percentage printed */
} ProgressWindow;

/* The library calls this on the thread that made the call. */
static int32_t VELORN_CALL showProgress(int32_t current, int32_t limit, void* userData) {
    ProgressWindow* const window = userData;
    const int32_t percent = (int32_t)(100.0 * current / limit);
    if (percent > window->shown) {
        window->shown = percent;
        printf("  %3d %%\n", (int)percent);
    }
    return window->isCancelled ? 0 : 1;
}

/* Deblurs `blurred` into `restored` and returns the status of the library. */
static int32_t deblur(const Library* library, KernelRecord* kernel, const Picture* blurred,
                      int32_t sourceStep, Picture* restored, ProgressWindow* window) {
    ProgressRecord progress = {1000, 1000, showProgress, NULL, 0};
    ImageRecord image = {psC3U8, NULL, 0, NULL, kStep, kWidth, kHeight};
    progress.userData = window;
    image.source = blurred->samples;
    image.sourceStep = sourceStep;
    image.target = restored->samples;
    return library->deblurSharpen(&progress, &image, kernel, 1, /* deconvolve */
                                  20000.0f, 0.5f,               /* strength, exponent */
                                  0.5f,                         /* overshoot limit */
                                  0.85f, 0.0f, 1.0f, 0.005f,    /* edge sharpening: off */
                                  0.0f, 0.0f);                  /* detail enhancement: off */
}

static int restorePicture(const Library* library, KernelRecord* kernel, Picture pictures[3]) {
    ProgressWindow window = {0, -1};
    int32_t status;
    puts("deblurring");
    status = deblur(library, kernel, &pictures[1], kStep, &pictures[2], &window);
    printf("status %d; mean distance from the sharp picture: blurred %.2f, restored %.2f\n",
           (int)status, meanDistance(&pictures[0], &pictures[1]),
           meanDistance(&pictures[0], &pictures[2]));
    return status == VELORN_OK;
}

static int cancel(const Library* library, KernelRecord* kernel, Picture pictures[3]) {
    ProgressWindow window = {1, -1};
    int32_t status;
    puts("deblurring again, cancelled at once");
    status = deblur(library, kernel, &pictures[1], kStep, &pictures[2], &window);
    printf("status %d: cancelled\n", (int)status);
    return status == VELORN_CANCELLED;
}

/* Passes a step shorter than a row: the library refuses the call and gives the reason. */
static int fail(const Library* library, KernelRecord* kernel, Picture pictures[3]) {
    ProgressWindow window = {0, 100};
    int32_t status;
    puts("deblurring with a wrong step");
    status = deblur(library, kernel, &pictures[1], kStep - 1, &pictures[2], &window);
    printf("status %d: %s\n", (int)status, library->errorText());
    return status == VELORN_TEXT_FAILURE && library->errorText()[0] != '\0';
}

int main(int argc, char** argv) {
    Library library = {NULL, NULL, NULL, NULL};
    KernelRecord kernel = {0, 0, 0, 0, NULL};
    Picture* const pictures = malloc(3 * sizeof *pictures); /* sharp, blurred, restored */
    int isDone = 0;
    if (pictures != NULL && loadLibrary(&library, argc > 1 ? argv[1] : "libvelorncore10.so") &&
        makeDisc(&library, &kernel)) {
        printf("disc of radius %.1f: %d by %d weights\n", (double)kRadius, (int)kernel.width,
               (int)kernel.height);
        draw(&pictures[0]);
        blur(&pictures[0], &kernel, &pictures[1]);
        isDone = restorePicture(&library, &kernel, pictures) &&
                 cancel(&library, &kernel, pictures) && fail(&library, &kernel, pictures);
    }
    free(kernel.data);
    free(pictures);
    if (library.handle != NULL) {
        dlclose(library.handle);
    }
    return isDone ? EXIT_SUCCESS : EXIT_FAILURE;
}
