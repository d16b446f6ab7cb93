#include <velorncore10.h>

int main(void) {
    float values[5];
    KernelRecord kernel = {0, 0, 0, 0, 0};
    kernel.data = values;
    return ornCreateKernel(2, 5.0f, 0.0f, &kernel) == VELORN_OK && kernel.width == 5 ? 0 : 1;
}
