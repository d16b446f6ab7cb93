#pragma once

#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <jpeglib.h>
#include <string>

namespace velorn {

/// The error handler of a call into libjpeg: its own handler ends the process. Fatal errors jump to
/// `jump`, which the caller sets in a function without objects that need destruction. Warnings are
/// not printed.
struct JpegFailure {
    jpeg_error_mgr manager{};
    std::jmp_buf jump;
    char message[JMSG_LENGTH_MAX] = "";

    jpeg_error_mgr* handler() {
        jpeg_std_error(&manager);
        manager.error_exit = [](j_common_ptr codec) {
            auto* self = reinterpret_cast<JpegFailure*>(codec->err);
            codec->err->format_message(codec, self->message);
            std::longjmp(self->jump, 1);
        };
        manager.output_message = [](j_common_ptr) {};
        return &manager;
    }
};
static_assert(offsetof(JpegFailure, manager) == 0);

} // namespace velorn
