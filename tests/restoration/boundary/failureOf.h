#pragma once

#include "restoration/failures/Failure.h"

#include <string>

namespace restoration::test {

/// The message of the Failure that `call` throws, "" if it throws none. `status` receives its
/// status.
template <class Call>
std::string failureOf(const Call& call, VelornStatus* status = nullptr) {
    try {
        call();
        return "";
    } catch (const Failure& failure) {
        if (status != nullptr) {
            *status = failure.status();
        }
        return failure.what();
    }
}

} // namespace restoration::test
