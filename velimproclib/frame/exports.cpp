// The exported functions: a thin layer that opens the call frame and hands on.
#include "velimproclib/frame/CallFrame.h"
#include "velorncore10.h"

const char* getErrMsg(void) {
    return vel::errorText();
}

int32_t velSetupLib(int32_t, int32_t) {
    return 0;
}

int32_t setDebugTrace(...) {
    return 0;
}
