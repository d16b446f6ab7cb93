/* A small Windows host: loads velorncore10.dll, restores a 24-bit bitmap that is blurred by a disc
 * of known radius, and prints progress.
 *
 *     deblurBitmap velorncore10.dll blurred.bmp restored.bmp RADIUS */
#include "velorncore10.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

/* The functions that this host calls, found by name. */
typedef int32_t(VELORN_CALL* DeblurSharpen)(ProgressRecord*, ImageRecord*, KernelRecord*, int32_t,
                                            float, float, float, float, float, float, float, float,
                                            float);
typedef int32_t(VELORN_CALL* CreateKernel)(int32_t, float, float, KernelRecord*);
typedef const char*(VELORN_CALL* GetErrMsg)(void);

typedef struct Library {
    DeblurSharpen deblurSharpen;
    CreateKernel createKernel;
    GetErrMsg getErrMsg;
} Library;

/* A bitmap in the layout of its file: a header, then rows of blue, green, red. */
typedef struct Bitmap {
    unsigned char* bytes;
    size_t size;
    unsigned char* pixels;
    int32_t width;
    int32_t height;
    int32_t step;
} Bitmap;

static int fail(const char* what, const char* name) {
    fprintf(stderr, "deblurBitmap: %s: %s\n", what, name);
    return 1;
}

/* A generic function pointer, like void* for data. */
typedef void (*AnyFunction)(void);

static AnyFunction find(HMODULE module, const char* name) {
    return (AnyFunction)GetProcAddress(module, name);
}

static int loadLibrary(const char* name, Library* library) {
    const HMODULE module = LoadLibraryA(name);
    if (module == NULL) {
        return fail("cannot load", name);
    }
    library->deblurSharpen = (DeblurSharpen)find(module, "ornDeblurSharpen");
    library->createKernel = (CreateKernel)find(module, "ornCreateKernel");
    library->getErrMsg = (GetErrMsg)find(module, "getErrMsg");
    if (!library->deblurSharpen || !library->createKernel || !library->getErrMsg) {
        return fail("not velorncore10", name);
    }
    return 0;
}

static int readFile(const char* name, Bitmap* bitmap) {
    FILE* const file = fopen(name, "rb");
    long size = -1;
    int isRead = 0;
    if (file == NULL) {
        return fail("cannot open", name);
    }
    if (fseek(file, 0, SEEK_END) == 0 && (size = ftell(file)) > 0 &&
        fseek(file, 0, SEEK_SET) == 0) {
        bitmap->size = (size_t)size;
        bitmap->bytes = malloc(bitmap->size);
        isRead =
            bitmap->bytes != NULL && fread(bitmap->bytes, 1, bitmap->size, file) == bitmap->size;
    }
    fclose(file);
    return isRead ? 0 : fail("cannot read", name);
}

/* Finds the pixels. Rows may run upwards or downwards: the blur of a disc is symmetric. */
static int readBitmap(const char* name, Bitmap* bitmap) {
    const size_t headers = sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER);
    const size_t largestSide = 30000;
    BITMAPFILEHEADER start;
    BITMAPINFOHEADER info;
    int64_t height;
    if (readFile(name, bitmap) != 0) {
        return 1;
    }
    if (bitmap->size < headers) {
        return fail("not a bitmap", name);
    }
    memcpy(&start, bitmap->bytes, sizeof start);
    memcpy(&info, bitmap->bytes + sizeof start, sizeof info);
    height = info.biHeight < 0 ? -(int64_t)info.biHeight : info.biHeight;
    if (start.bfType != 0x4D42 || info.biBitCount != 24 || info.biCompression != BI_RGB ||
        info.biWidth < 1 || (size_t)info.biWidth > largestSide || height < 1 ||
        (uint64_t)height > largestSide) {
        return fail("not a 24-bit bitmap", name);
    }
    bitmap->width = info.biWidth;
    bitmap->height = (int32_t)height;
    bitmap->step = (3 * bitmap->width + 3) / 4 * 4;
    if (start.bfOffBits < headers || start.bfOffBits > bitmap->size ||
        bitmap->size - start.bfOffBits < (size_t)bitmap->step * (size_t)bitmap->height) {
        return fail("bitmap ends too early", name);
    }
    bitmap->pixels = bitmap->bytes + start.bfOffBits;
    return 0;
}

/* The library expects red, green, blue: the luminance that it restores weights them differently. */
static void swapRedAndBlue(const Bitmap* bitmap, unsigned char* pixels) {
    int32_t x, y;
    for (y = 0; y < bitmap->height; ++y) {
        unsigned char* row = pixels + (size_t)y * (size_t)bitmap->step;
        for (x = 0; x < bitmap->width; ++x, row += 3) {
            const unsigned char first = row[0];
            row[0] = row[2];
            row[2] = first;
        }
    }
}

static int32_t VELORN_CALL printProgress(int32_t current, int32_t limit, void* userData) {
    (void)userData;
    printf("%d of %d\n", (int)current, (int)limit);
    fflush(stdout);
    return 1; /* continue; 0 cancels */
}

static int restore(const Library* library, const Bitmap* bitmap, float radius,
                   unsigned char* restored) {
    const int32_t side = 2 * (int32_t)(radius + 0.5f) + 1;
    int anything; /* the library makes no callback without user data */
    ProgressRecord progress = {100, 100, printProgress, NULL, 0};
    KernelRecord kernel = {0, 0, 0, 0, NULL};
    ImageRecord image = {psC3U8, NULL, 0, NULL, 0, 0, 0};
    int32_t status;
    progress.userData = &anything;
    image.source = bitmap->pixels;
    image.target = restored;
    image.sourceStep = image.targetStep = bitmap->step;
    image.width = bitmap->width;
    image.height = bitmap->height;
    kernel.data = malloc(sizeof(float) * (size_t)side * (size_t)side);
    if (kernel.data == NULL) {
        return fail("no memory for", "the kernel");
    }
    status = library->createKernel(1, radius, 0.0f, &kernel);
    if (status == VELORN_OK) {
        status = library->deblurSharpen(&progress, &image, &kernel, 1, 8000.0f, 0.5f, 0.5f, 0.85f,
                                        0.0f, 1.0f, 0.005f, 0.0f, 0.0f);
    }
    free(kernel.data);
    if (status != VELORN_OK) {
        fprintf(stderr, "deblurBitmap: status %d %s\n", (int)status, library->getErrMsg());
        return 1;
    }
    return 0;
}

static int writeBitmap(const char* name, const Bitmap* bitmap, const unsigned char* restored) {
    FILE* const file = fopen(name, "wb");
    const size_t start = (size_t)(bitmap->pixels - bitmap->bytes);
    const size_t size = (size_t)bitmap->step * (size_t)bitmap->height;
    int isWritten;
    if (file == NULL) {
        return fail("cannot create", name);
    }
    isWritten =
        fwrite(bitmap->bytes, 1, start, file) == start && fwrite(restored, 1, size, file) == size;
    isWritten = fclose(file) == 0 && isWritten;
    return isWritten ? 0 : fail("cannot write", name);
}

static int deblur(const Library* library, const Bitmap* bitmap, float radius, const char* output) {
    unsigned char* const restored = calloc((size_t)bitmap->height, (size_t)bitmap->step);
    int result;
    if (restored == NULL) {
        return fail("no memory for", output);
    }
    swapRedAndBlue(bitmap, bitmap->pixels);
    result = restore(library, bitmap, radius, restored);
    if (result == 0) {
        swapRedAndBlue(bitmap, restored);
        result = writeBitmap(output, bitmap, restored);
    }
    free(restored);
    return result;
}

int main(int argc, char** argv) {
    Library library = {NULL, NULL, NULL};
    Bitmap bitmap = {NULL, 0, NULL, 0, 0, 0};
    float radius;
    int result;
    if (argc != 5) {
        fprintf(stderr, "usage: deblurBitmap velorncore10.dll blurred.bmp restored.bmp RADIUS\n");
        return 2;
    }
    radius = (float)atof(argv[4]);
    if (!(radius >= 0.5f && radius <= 25.0f)) {
        return fail("a radius is 0.5 to 25, not", argv[4]);
    }
    if (loadLibrary(argv[1], &library) != 0 || readBitmap(argv[2], &bitmap) != 0) {
        return 1;
    }
    result = deblur(&library, &bitmap, radius, argv[3]);
    free(bitmap.bytes);
    return result;
}
