/* Compiles the header as C99 and checks the record layout that hosts in other languages rely on. */
#include "velorncore10.h"

#include <stddef.h>

#define HOLDS(name, condition) typedef char name[(condition) ? 1 : -1]

HOLDS(progress_total, offsetof(ProgressRecord, total) == 0);
HOLDS(progress_limit, offsetof(ProgressRecord, limit) == 4);
HOLDS(progress_callback, offsetof(ProgressRecord, callback) == 8);
HOLDS(progress_userData, offsetof(ProgressRecord, userData) == 8 + sizeof(void*));
HOLDS(progress_current, offsetof(ProgressRecord, current) == 8 + 2 * sizeof(void*));

HOLDS(image_format, offsetof(ImageRecord, format) == 0);
HOLDS(image_source, offsetof(ImageRecord, source) == sizeof(void*));
HOLDS(image_sourceStep, offsetof(ImageRecord, sourceStep) == 2 * sizeof(void*));
HOLDS(image_target, offsetof(ImageRecord, target) == 3 * sizeof(void*));
HOLDS(image_targetStep, offsetof(ImageRecord, targetStep) == 4 * sizeof(void*));
HOLDS(image_width, offsetof(ImageRecord, width) == 4 * sizeof(void*) + 4);
HOLDS(image_height, offsetof(ImageRecord, height) == 4 * sizeof(void*) + 8);

HOLDS(plane_data, offsetof(PlaneRecord, data) == sizeof(void*));
HOLDS(plane_step, offsetof(PlaneRecord, step) == 2 * sizeof(void*));
HOLDS(plane_height, offsetof(PlaneRecord, height) == 2 * sizeof(void*) + 8);

HOLDS(kernel_anchorX, offsetof(KernelRecord, anchorX) == 8);
HOLDS(kernel_data, offsetof(KernelRecord, data) == 16);

HOLDS(profiles_inSize, offsetof(PSProfilesRecord, inSize) == sizeof(void*));
HOLDS(profiles_outData, offsetof(PSProfilesRecord, outData) == 2 * sizeof(void*));

HOLDS(plane_format, offsetof(PlaneRecord, format) == 0);
HOLDS(plane_width, offsetof(PlaneRecord, width) == 2 * sizeof(void*) + 4);
HOLDS(kernel_width, offsetof(KernelRecord, width) == 0);
HOLDS(kernel_height, offsetof(KernelRecord, height) == 4);
HOLDS(kernel_anchorY, offsetof(KernelRecord, anchorY) == 12);
HOLDS(profiles_inData, offsetof(PSProfilesRecord, inData) == 0);
HOLDS(profiles_outSize, offsetof(PSProfilesRecord, outSize) == 3 * sizeof(void*));

int callFromC(int32_t(VELORN_CALL* createKernel)(int32_t, float, float, KernelRecord*),
              float* values) {
    KernelRecord kernel = {0, 0, 0, 0, NULL};
    kernel.data = values;
    return createKernel(2, 5.0f, 0.0f, &kernel) == VELORN_OK && kernel.width == 5 &&
           kernel.height == 1;
}
