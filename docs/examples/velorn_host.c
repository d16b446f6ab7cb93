/* A host of libvelorn in C: restores a photograph that was out of focus.
 *
 *     velorn_host_c blurred.ppm restored.ppm RADIUS
 *
 * The kernel is a disc of RADIUS pixels. Pictures are binary PPM files of 8 bits per sample. Ctrl-C
 * cancels the restoration. */
#include <velorn.h>

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>

/* ---- Files ----------------------------------------------------------------------------------- */

enum { kChannels = 3 };

/* Reads the size of a PPM file, which ends with one white space before the samples. */
static int readSize(FILE* file, int* width, int* height) {
    int white = 0;
    return fscanf(file, "P6 %d %d %d", width, height, &white) == 3 && white == 255 && *width > 0 &&
           *height > 0 && fgetc(file) != EOF;
}

/* Describes `width` by `height` pixels without gaps between the rows. */
static VelornPicture describe(unsigned char* samples, int width, int height) {
    VelornPicture picture;
    picture.data = samples;
    picture.rowStride = (ptrdiff_t)width * kChannels;
    picture.width = width;
    picture.height = height;
    picture.channels = kChannels;
    picture.hasAlpha = 0;
    picture.samples = VELORN_SAMPLES_U8;
    return picture;
}

/* Reads a picture. Its data is null after a failure; the caller frees it. */
static VelornPicture readPicture(const char* name) {
    FILE* const file = fopen(name, "rb");
    unsigned char* samples = NULL;
    int width = 0, height = 0;
    if (file != NULL && readSize(file, &width, &height)) {
        const size_t count = (size_t)width * (size_t)height * kChannels;
        samples = malloc(count);
        if (samples != NULL && fread(samples, 1, count, file) != count) {
            free(samples);
            samples = NULL;
        }
    }
    if (file != NULL) {
        fclose(file);
    }
    return describe(samples, width, height);
}

static int writePicture(const char* name, const VelornPicture* picture) {
    const size_t count = (size_t)picture->width * (size_t)picture->height * kChannels;
    FILE* const file = fopen(name, "wb");
    int isWritten;
    if (file == NULL) {
        return 0;
    }
    isWritten = fprintf(file, "P6\n%d %d\n255\n", (int)picture->width, (int)picture->height) > 0 &&
                fwrite(picture->data, 1, count, file) == count;
    return fclose(file) == 0 && isWritten;
}

/* ---- Progress and cancellation --------------------------------------------------------------- */

static volatile sig_atomic_t isInterrupted = 0;

static void interrupt(int number) {
    (void)number;
    isInterrupted = 1;
}

/* The library calls this on the thread that made the call, several times per second. */
static int32_t showProgress(double done, void* userData) {
    int* const shown = userData;
    const int percent = (int)(100.0 * done);
    if (percent > *shown) {
        *shown = percent;
        printf("%3d %%\n", percent);
        fflush(stdout);
    }
    return !isInterrupted;
}

/* ---- The calls of the library ---------------------------------------------------------------- */

static void printReport(const VelornRestoreReport* report) {
    printf("noise %.2f levels, strength %.0f, limit %.2f, in %s values\n", (double)report->noise,
           (double)report->strength, (double)report->limit,
           report->light == VELORN_LIGHT_LINEAR ? "linear" : "display");
    printf("%d tiles in %.1f seconds\n", (int)report->tiles, report->secondsTotal);
}

/* Restores `picture` in place. */
static VelornStatus restore(const VelornPicture* picture, const VelornKernel* kernel) {
    int shown = -1;
    VelornRestoreSettings settings;
    VelornRestoreReport report;
    VelornStatus status;
    settings.size = sizeof settings;
    report.size = sizeof report;
    status = velornRestoreDefaults(&settings);
    if (status != VELORN_STATUS_OK) {
        return status;
    }
    settings.progress = showProgress;
    settings.userData = &shown;
    status = velornRestore(picture, picture, &kernel, 1, &settings, &report);
    if (status == VELORN_STATUS_OK) {
        printReport(&report);
    }
    return status;
}

static VelornStatus restoreDisc(const VelornPicture* picture, float radius) {
    VelornKernel* kernel = NULL;
    VelornStatus status = velornMakeKernel(VELORN_BLUR_DISC, radius, 0.0f, &kernel);
    if (status == VELORN_STATUS_OK) {
        status = restore(picture, kernel);
    }
    velornFreeKernel(kernel);
    return status;
}

/* ---- The program ----------------------------------------------------------------------------- */

static int run(const char* source, const char* target, float radius) {
    const VelornPicture picture = readPicture(source);
    int isDone = 0;
    if (picture.data == NULL) {
        fprintf(stderr, "%s: not a readable PPM file\n", source);
    } else if (restoreDisc(&picture, radius) != VELORN_STATUS_OK) {
        fprintf(stderr, "%s\n", velornLastMessage());
    } else if (!writePicture(target, &picture)) {
        fprintf(stderr, "%s: not written\n", target);
    } else {
        isDone = 1;
    }
    free(picture.data);
    return isDone;
}

int main(int argc, char** argv) {
    if (argc != 4) {
        fprintf(stderr, "usage: %s blurred.ppm restored.ppm RADIUS\n", argv[0]);
        return EXIT_FAILURE;
    }
    signal(SIGINT, interrupt);
    return run(argv[1], argv[2], (float)atof(argv[3])) ? EXIT_SUCCESS : EXIT_FAILURE;
}
