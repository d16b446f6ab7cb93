/* Loads the library that the command line names, restores a picture with all stages, and unloads
 * the library. Succeeds if the library is gone then. */
#include "velorn.h"

#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

typedef VelornStatus MakeKernel(int32_t, float, float, VelornKernel**);
typedef void FreeKernel(VelornKernel*);
typedef VelornStatus RestoreDefaults(VelornRestoreSettings*);
typedef VelornStatus Restore(const VelornPicture*, const VelornPicture*, const VelornKernel* const*,
                             int32_t, const VelornRestoreSettings*, VelornRestoreReport*);

enum { kSide = 200 };
static unsigned char samples[kSide * kSide];

/* ISO C has no cast from pointers to objects to pointers to functions. */
static void find(void* library, const char* name, void* function) {
    void* const symbol = dlsym(library, name);
    memcpy(function, &symbol, sizeof symbol);
}

static int restore(void* library) {
    MakeKernel* makeKernel;
    FreeKernel* freeKernel;
    RestoreDefaults* defaults;
    Restore* restorePicture;
    VelornKernel* kernel = NULL;
    const VelornPicture picture = {samples, kSide, kSide, kSide, 1, 0, VELORN_SAMPLES_U8};
    VelornRestoreSettings settings;
    int isDone;
    find(library, "velornMakeKernel", &makeKernel);
    find(library, "velornFreeKernel", &freeKernel);
    find(library, "velornRestoreDefaults", &defaults);
    find(library, "velornRestore", &restorePicture);
    settings.size = sizeof settings;
    if (defaults(&settings) != VELORN_STATUS_OK) {
        return 0;
    }
    settings.edgeGain = 2.0f;
    settings.detailGain = 1.0f;
    settings.quality = VELORN_QUALITY_BEST;
    isDone = makeKernel(VELORN_BLUR_DISC, 3.0f, 0.0f, &kernel) == VELORN_STATUS_OK &&
             restorePicture(&picture, &picture, (const VelornKernel* const*)&kernel, 1, &settings,
                            NULL) == VELORN_STATUS_OK;
    freeKernel(kernel);
    return isDone;
}

int main(int argc, char** argv) {
    void* const library = dlopen(argc > 1 ? argv[1] : "", RTLD_NOW | RTLD_LOCAL);
    size_t i;
    for (i = 0; i < sizeof samples; ++i) {
        samples[i] = (unsigned char)(i / 7 % 5 * 40 + 30);
    }
    if (library == NULL || !restore(library)) {
        puts("not restored");
        return 1;
    }
    dlclose(library);
    if (dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != NULL) {
        puts("still loaded");
        return 1;
    }
    return 0;
}
