#include "support/GuardedFrame.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>

namespace support {
namespace {

constexpr std::byte kPaddingByte{0xA7};

} // namespace

GuardedFrameRef GuardedFrame::Make(const Form& inForm)
{
    return kiocore::classref::MakeObject<GuardedFrame>(inForm);
}

GuardedFrame::GuardedFrame(const Form& inForm)
    : mForm(inForm), mLayout(VF::LayoutOf(inForm.format, inForm.width, inForm.height, true))
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    for (int index = 0; index < mLayout.planeCount; ++index) {
        const VF::FrameLayout::Plane& layout = mLayout.planes[index];
        Plane plane;
        plane.rowBytes = layout.usedBytes + inForm.paddingBytes;
        const std::size_t bytes = plane.rowBytes * (layout.rows - 1) + layout.usedBytes;
        const std::size_t pages = (bytes + page - 1) / page * page;
        plane.mappingBytes = pages + 2 * page;
        void* const mapping =
            mmap(nullptr, plane.mappingBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (mapping == MAP_FAILED) {
            throw std::runtime_error("cannot map " + std::to_string(plane.mappingBytes) + " bytes");
        }
        plane.mapping = static_cast<std::byte*>(mapping);
        if (mprotect(plane.mapping + page, pages, PROT_READ | PROT_WRITE) != 0) {
            throw std::runtime_error("cannot open the pages between the guards");
        }
        plane.pixels = plane.mapping + page + (inForm.touches == Touches::kUpperPage ? pages - bytes : 0);
        std::memset(plane.mapping + page, 0xCD, pages);
        mPlanes.push_back(plane);
    }
    ForEachPadding([](std::byte& ioByte) { ioByte = kPaddingByte; });
}

GuardedFrame::~GuardedFrame()
{
    for (const Plane& plane : mPlanes) {
        munmap(plane.mapping, plane.mappingBytes);
    }
}

template <typename Visitor>
void GuardedFrame::ForEachPadding(const Visitor& inVisitor) const
{
    for (int index = 0; index < mLayout.planeCount; ++index) {
        const Plane& plane = mPlanes[PlaneIndex(index)];
        for (std::uint32_t row = 0; row + 1 < mLayout.planes[index].rows; ++row) {
            std::byte* const padding = plane.pixels + row * plane.rowBytes + mLayout.planes[index].usedBytes;
            std::for_each(padding, padding + mForm.paddingBytes, inVisitor);
        }
    }
}

bool GuardedFrame::PaddingIsIntact() const
{
    bool intact = true;
    ForEachPadding([&](std::byte inByte) { intact = intact && inByte == kPaddingByte; });
    return intact;
}

void* GuardedFrame::QueryMap(const CFUUIDBytes& inInterfaceID)
{
    if (inInterfaceID == MF::IVideoFrame::InterfaceID()) {
        return static_cast<MF::IVideoFrame*>(this);
    }
    if (inInterfaceID == VF::IVideoFrameMemoryAccess::InterfaceID()) {
        return static_cast<VF::IVideoFrameMemoryAccess*>(this);
    }
    return UnknownBase::QueryMap(inInterfaceID);
}

} // namespace support
