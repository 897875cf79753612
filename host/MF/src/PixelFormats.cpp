#include <MF/PixelFormats.h>

#include <kiocore/debug/Trace.h>

namespace MF {

kiomediatypes::PixelFormat SDKToBEPixelFormat(std::uint32_t inCode)
{
    KIO_HOST_CALL("MF::SDKToBEPixelFormat", inCode);
    for (const kiomediatypes::NamedPixelFormat& format : kiomediatypes::kPixelFormats) {
        if (static_cast<std::uint32_t>(format.format) == inCode) {
            return format.format;
        }
    }
    return kiomediatypes::kPixelFormat_Any;
}

} // namespace MF
