#include "restoration/boundary/guardedCall.h"

#include "restoration/failures/Failure.h"

#include <new>
#include <opencv2/core.hpp>

namespace restoration {
namespace {

VelornStatus outOfMemory() noexcept {
    storeMessage("out of memory");
    return VELORN_STATUS_OUT_OF_MEMORY;
}

} // namespace

VelornStatus statusOfCurrentException() noexcept {
    try {
        throw;
    } catch (const Failure& failure) {
        storeMessage(failure.what());
        return failure.status();
    } catch (const std::bad_alloc&) {
        return outOfMemory();
    } catch (const cv::Exception& exception) { // of the core's matrices
        if (exception.code == cv::Error::StsNoMem) {
            return outOfMemory();
        }
        storeMessage(exception.what());
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
