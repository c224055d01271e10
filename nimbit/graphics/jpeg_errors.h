#pragma once

#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

// libjpeg reports fatal errors by calling error_exit, which must not return: this one jumps back to
// the setjmp on `jump` in the function that owns the libjpeg object, which then destroys it and
// fails. Only plain C data may live in the frames between that setjmp and the jump.

namespace nimbit::graphics {

struct jpeg_errors {
    jpeg_error_mgr base;
    std::jmp_buf jump;
};

[[noreturn]] inline void jpeg_error_exit(j_common_ptr info) {
    std::longjmp(reinterpret_cast<jpeg_errors*>(info->err)->jump, 1);
}

// Fatal errors jump; warnings and trace messages go to on_message (nothing is printed).
inline void install_jpeg_errors(jpeg_errors& errors, void (*on_message)(j_common_ptr, int)) {
    jpeg_std_error(&errors.base);
    errors.base.error_exit = jpeg_error_exit;
    errors.base.emit_message = on_message;
    errors.base.output_message = [](j_common_ptr) {
    };
}

} // namespace nimbit::graphics
