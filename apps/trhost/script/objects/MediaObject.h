#pragma once

#include "FrameObject.h"

#include <media/MediaModule.h>

namespace trhost::script {

/// An opened clip: class "Clip".
class ClipObject final : public kioscripting::ScriptObject {
public:
    const char* GetClassname() const override;
    /// Opens a native path.
    void Initialize(ScriptHostPtr inHost, const std::string& inPath);

    kiocore::UTF16String GetPath() const;
    int GetWidth() const { return mReader->Stream().width; }
    int GetHeight() const { return mReader->Stream().height; }
    double GetFramesPerSecond() const { return mReader->Stream().framesPerSecond; }
    double GetDurationSeconds() const { return mReader->Stream().durationSeconds; }
    std::string GetCodec() const { return mReader->Stream().codec; }
    FrameObjectPtr FrameAt(double inSeconds) const;
    FrameObjectPtr FrameNumber(std::uint32_t inNumber) const;

private:
    ScriptHostPtr mHost;
    std::string mPath;
    std::unique_ptr<media::IVideoReader> mReader;
};

/// Where scripts get pictures from: class "Media", one object, `media`.
class MediaObject final : public kioscripting::ScriptObject {
public:
    const char* GetClassname() const override;
    void Initialize(ScriptHostPtr inHost) { mHost = std::move(inHost); }

    boost::intrusive_ptr<ClipObject> Open(const kiocore::UTF16String& inPath) const;
    FrameObjectPtr Picture(const kiocore::UTF16String& inPath) const;

private:
    ScriptHostPtr mHost;
};

} // namespace trhost::script
