// The exported functions: a thin layer that opens the call frame and hands on.
#include "velimproclib/frame/CallFrame.h"
#include "velimproclib/frame/createKernel.h"
#include "velorncore10.h"

int32_t ornCreateKernel(int32_t type, float paramA, float paramB, KernelRecord* kernel) {
    return vel::runGuarded([&] { return vel::createKernel(type, paramA, paramB, kernel); });
}

const char* getErrMsg(void) {
    return vel::errorText();
}

int32_t velSetupLib(int32_t, int32_t) {
    return 0;
}

int32_t setDebugTrace(...) {
    return 0;
}
