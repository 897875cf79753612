#pragma once

#include <png.h>

#include <cstring>

namespace VF {

/// What libpng said last. Handed to it as its error pointer; it jumps back from there.
struct PNGMessages {
    char error[160] = {};
};

[[noreturn]] inline void OnPNGError(png_structp inPNG, png_const_charp inText)
{
    auto& messages = *static_cast<PNGMessages*>(png_get_error_ptr(inPNG));
    std::strncpy(messages.error, inText && *inText ? inText : "unknown", sizeof(messages.error) - 1);
    png_longjmp(inPNG, 1);
}

/// About chunks that are passed over, or a transparent colour that is left out: the picture is there.
inline void OnPNGWarning(png_structp, png_const_charp) {}

} // namespace VF
