#include "Devices.h"

#include "AvfilterSupport.h"
#include "support/KeptText.h"

extern "C" {
#include <libavutil/hwcontext.h>
}

#include <map>
#include <mutex>

namespace trhost::effects::avfilter {
namespace {

std::string Find(const char* inKind)
{
    const AVHWDeviceType type = av_hwdevice_find_type_by_name(inKind);
    if (type == AV_HWDEVICE_TYPE_NONE) {
        return KeptText("$$$/Halcyon/TrHost/Effects/DeviceUnknown=needs a device of kind @0, which this "
                        "build of libavutil does not know#{@0: vulkan}",
                        {inKind});
    }
    const ScFilterMessages messages;
    AVBufferRef* device = nullptr;
    const int result = av_hwdevice_ctx_create(&device, type, nullptr, nullptr, 0);
    av_buffer_unref(&device);
    if (result < 0) {
        return KeptText(
            "$$$/Halcyon/TrHost/Effects/DeviceMissing=needs a device of kind @0, none is found#{@0: vulkan}",
            {inKind});
    }
    return KeptText("$$$/Halcyon/TrHost/Effects/DeviceOnly=runs on a device of kind @0; one is found, but "
                    "pictures are handed over in main memory only#{@0: vulkan}",
                    {inKind});
}

} // namespace

std::string ReasonWithoutDevice(const char* inKind)
{
    // Opening drivers takes long. Held meanwhile: nobody else can answer sooner, and drivers call nothing of
    // ours but the trace.
    static std::mutex sLock;
    static std::map<std::string, std::string> sReasons;
    const std::lock_guard lock(sLock);
    auto [found, isNew] = sReasons.try_emplace(inKind);
    if (isNew) {
        found->second = Find(inKind);
    }
    return found->second;
}

} // namespace trhost::effects::avfilter
