/* A host in C: loads the library, makes a kernel, takes the blur out of a small picture with
 * progress, cancels a call, and shows the text of a failure.
 *
 *     minimal_host [LIBRARY]
 *
 * The library is loaded at run time, as programs do that go on without it when it is missing and
 * as plug-ins do that bring it along. A program that always has it links it instead, leaves the
 * Library record away and calls the functions by their names.
 *
 * Exit status: 0 when every step ended as it should, 1 otherwise. */
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

/* The functions that this host calls, with the types that the header gives them. */
typedef struct Library {
    void* handle;
    int32_t(VELORN_CALL* createKernel)(int32_t, float, float, KernelRecord*);
    int32_t(VELORN_CALL* deblurSharpen)(ProgressRecord*, ImageRecord*, KernelRecord*, int32_t,
                                        float, float, float, float, float, float, float, float,
                                        float);
    const char*(VELORN_CALL* errorText)(void);
} Library;

/* Finds one function. C has no conversion from an object's address to a function's, so the address
 * is copied. */
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
    /* Compiled and never evaluated: the types above cannot part from those of the header. */
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

/* Tiles of many shades. */
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

/* What a lens out of focus makes of `sharp`. Beyond the borders the outermost pixels go on. */
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

/* Fills `kernel` with a disc. The host owns its memory and knows how much a disc needs. */
static int makeDisc(const Library* library, KernelRecord* kernel) {
    const int side = 2 * (int)(kRadius + 0.5f) + 1;
    memset(kernel, 0, sizeof *kernel);
    kernel->data = malloc((size_t)side * (size_t)side * sizeof *kernel->data);
    return kernel->data != NULL && library->createKernel(kDisc, kRadius, 0.0f, kernel) == VELORN_OK;
}

/* What the progress callback works with: a window with a bar and a button, in a larger host. */
typedef struct ProgressWindow {
    int isCancelled; /* set as soon as the user has enough */
    int32_t shown;   /* percent */
} ProgressWindow;

/* Called by the library, on the thread that made the call. */
static int32_t VELORN_CALL showProgress(int32_t current, int32_t limit, void* userData) {
    ProgressWindow* const window = userData;
    const int32_t percent = (int32_t)(100.0 * current / limit);
    if (percent > window->shown) {
        window->shown = percent;
        printf("  %3d %%\n", (int)percent);
    }
    return window->isCancelled ? 0 : 1;
}

/* Deblurs `blurred` into `restored` and returns the library's status. */
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

/* A step that is shorter than a row: the library refuses it and says why. */
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
