/* The layout of the records in a C program on 32-bit Windows, and a call through the import library
 * with one of them. */
#include "velorncore10.h"

#include <stddef.h>
#include <stdio.h>

typedef struct Expectation {
    const char* what;
    size_t found;
    size_t expected;
} Expectation;

#define SIZE(record, expected)                                                                     \
    { "sizeof " #record, sizeof(record), expected }
#define OFFSET(record, field, expected)                                                            \
    { #record "." #field, offsetof(record, field), expected }

static const Expectation expectations[] = {
    SIZE(ProgressRecord, 20),
    OFFSET(ProgressRecord, total, 0),
    OFFSET(ProgressRecord, limit, 4),
    OFFSET(ProgressRecord, callback, 8),
    OFFSET(ProgressRecord, userData, 12),
    OFFSET(ProgressRecord, current, 16),
    SIZE(ImageRecord, 28),
    OFFSET(ImageRecord, format, 0),
    OFFSET(ImageRecord, source, 4),
    OFFSET(ImageRecord, sourceStep, 8),
    OFFSET(ImageRecord, target, 12),
    OFFSET(ImageRecord, targetStep, 16),
    OFFSET(ImageRecord, width, 20),
    OFFSET(ImageRecord, height, 24),
    SIZE(PlaneRecord, 20),
    OFFSET(PlaneRecord, format, 0),
    OFFSET(PlaneRecord, data, 4),
    OFFSET(PlaneRecord, step, 8),
    OFFSET(PlaneRecord, width, 12),
    OFFSET(PlaneRecord, height, 16),
    SIZE(KernelRecord, 20),
    OFFSET(KernelRecord, width, 0),
    OFFSET(KernelRecord, height, 4),
    OFFSET(KernelRecord, anchorX, 8),
    OFFSET(KernelRecord, anchorY, 12),
    OFFSET(KernelRecord, data, 16),
    SIZE(PSProfilesRecord, 16),
    OFFSET(PSProfilesRecord, inData, 0),
    OFFSET(PSProfilesRecord, inSize, 4),
    OFFSET(PSProfilesRecord, outData, 8),
    OFFSET(PSProfilesRecord, outSize, 12),
};

int main(void) {
    float values[5];
    KernelRecord kernel = {0, 0, 0, 0, NULL};
    int failures = 0;
    size_t i;
    for (i = 0; i < sizeof expectations / sizeof expectations[0]; ++i) {
        const Expectation* const e = &expectations[i];
        if (e->found != e->expected) {
            printf("%s: %u, expected %u\n", e->what, (unsigned)e->found, (unsigned)e->expected);
            ++failures;
        }
    }
    kernel.data = values;
    if (ornCreateKernel(2, 5.0f, 0.0f, &kernel) != VELORN_OK || kernel.width != 5 ||
        kernel.anchorX != 2 || values[4] != 0.2f) {
        printf("ornCreateKernel through the import library: wrong\n");
        ++failures;
    }
    return failures == 0 ? 0 : 1;
}
