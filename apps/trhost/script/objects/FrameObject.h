#pragma once

#include "ScriptHost.h"

#include <MF/VideoFrame.h>
#include <kioscripting/ScriptObject.h>

#include <boost/smart_ptr/intrusive_ptr.hpp>

namespace trhost::script {

/// One picture: class "Frame".
class FrameObject final : public kioscripting::ScriptObject, public kioscripting::ICast<MF::IVideoFrameRef> {
public:
    const char* GetClassname() const override;
    void Initialize(ScriptHostPtr inHost, MF::IVideoFrameRef inFrame);

    std::uint32_t GetWidth() const { return mFrame->GetWidth(); }
    std::uint32_t GetHeight() const { return mFrame->GetHeight(); }
    std::string GetFormat() const;
    std::string GetPixelAspectRatio() const;
    /// @throws Failure; kio_exception (kError_BadArgument) outside of the allowed folders.
    void Save(const kiocore::UTF16String& inPath) const;
    /// A copy in another format, size, or both; "" and 0 keep what it has.
    boost::intrusive_ptr<FrameObject> Converted(const std::string& inFormat, std::uint32_t inWidth,
                                                std::uint32_t inHeight) const;
    bool CastTo(MF::IVideoFrameRef& outFrame) const override;

private:
    ScriptHostPtr mHost;
    MF::IVideoFrameRef mFrame;
};
using FrameObjectPtr = boost::intrusive_ptr<FrameObject>;

/// @return empty when the context is not open.
FrameObjectPtr MakeFrameObject(const ScriptHostPtr& inHost, const MF::IVideoFrameRef& inFrame, int inContext);

} // namespace trhost::script
