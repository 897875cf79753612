#include <kiomediatypes/PixelFormat.h>

namespace kiomediatypes {

PixelFormat PixelFormatNamed(std::string_view inName)
{
    for (const NamedPixelFormat& named : kPixelFormats) {
        if (inName == named.name) {
            return named.format;
        }
    }
    return kPixelFormat_Any;
}

const char* NameOf(PixelFormat inFormat)
{
    for (const NamedPixelFormat& named : kPixelFormats) {
        if (inFormat == named.format) {
            return named.name;
        }
    }
    return "?";
}

} // namespace kiomediatypes
