#include "restoration/boundary/guardedCall.h"

#include "restoration/failures/Failure.h"

#include <new>

namespace restoration {

VelornStatus statusOfCurrentException() noexcept {
    try {
        throw;
    } catch (const Failure& failure) {
        storeMessage(failure.what());
        return failure.status();
    } catch (const std::bad_alloc&) {
        storeMessage("out of memory");
        return VELORN_STATUS_OUT_OF_MEMORY;
    } catch (const std::exception& exception) {
        storeMessage(exception.what());
    } catch (const char* text) { // the core's failures
        storeMessage(text);
    } catch (...) {
        storeMessage("unknown failure");
    }
    return VELORN_STATUS_INTERNAL;
}

} // namespace restoration
