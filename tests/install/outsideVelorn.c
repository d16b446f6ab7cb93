#include <velorn.h>

int main(void) {
    VelornKernel* kernel = NULL;
    const VelornStatus status = velornMakeKernel(VELORN_BLUR_MOTION, 5.0f, 0.0f, &kernel);
    const int isRight = status == VELORN_STATUS_OK && velornKernelWidth(kernel) == 5;
    velornFreeKernel(kernel);
    return isRight ? 0 : 1;
}
