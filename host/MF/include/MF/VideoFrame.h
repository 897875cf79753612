#pragma once

#include <kiocore/Export.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiomediatypes/ColorSpace.h>
#include <kiomediatypes/PixelAspectRatio.h>
#include <kiomediatypes/PixelFormat.h>

#include <cstdint>

namespace MF {

using kiocore::InterfaceRef;

/// One picture. Its form never changes; its pixels may be written until it is shared.
///
/// Threading: one thread at a time until it was prepared for sharing, any thread from then on.
class KIO_EXPORT IVideoFrame : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IVideoFrame() override;

    virtual std::uint32_t GetWidth() const = 0;  ///< in pixels
    virtual std::uint32_t GetHeight() const = 0; ///< in rows
    virtual kiomediatypes::PixelFormat GetPixelFormat() const = 0;
    virtual kiomediatypes::PixelAspectRatio GetPixelAspectRatio() const = 0;
    virtual kiomediatypes::color::ColorSpace GetColorSpace() const = 0;
    /// What the pixels take, rows' padding included, whether they are there yet or not.
    virtual std::uint64_t GetSizeBytes() const = 0;

    /// Gives the frame its memory; a frame is made without, so that making one costs nothing. Pixels hold
    /// anything afterwards unless the frame was asked for zeroed. Calling it again changes nothing.
    /// @param inOptions  0; no others are known.
    /// @return false when memory could not be had.
    virtual bool InitializePixels(int inOptions) = 0;
    /// Nobody may write the pixels from now on, so that several may read them at once.
    virtual void PrepareForSharing() = 0;
};
using IVideoFrameRef = InterfaceRef<IVideoFrame>;

/// A frame that can be made blank.
class KIO_EXPORT IVideoFrameClearable : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IVideoFrameClearable() override;

    /// Opaque black in every format. Nothing happens to a frame without memory or one that is shared.
    virtual void Clear() = 0;
};

} // namespace MF
