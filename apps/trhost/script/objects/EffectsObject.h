#pragma once

#include "FrameObject.h"

#include <kioscripting/Value.h>

namespace trhost::script {

/// An effect at work on pictures of one size: class "VideoEffect".
class VideoEffectObject final : public kioscripting::ScriptObject {
public:
    const char* GetClassname() const override;
    void Initialize(ScriptHostPtr inHost, std::string inMatchName, effects::VideoEffectForm inForm,
                    std::unique_ptr<effects::IVideoEffect> inEffect);

    std::string GetMatchName() const { return mMatchName; }
    /// @return empty when the effect wants more pictures first.
    FrameObjectPtr Render(const MF::IVideoFrameRef& inFrame, double inSeconds);

private:
    ScriptHostPtr mHost;
    std::string mMatchName;
    effects::VideoEffectForm mForm;
    std::unique_ptr<effects::IVideoEffect> mEffect;
};

/// The filters of this machine: class "Effects", one object, `effects`.
class EffectsObject final : public kioscripting::ScriptObject {
public:
    const char* GetClassname() const override;
    void Initialize(ScriptHostPtr inHost) { mHost = std::move(inHost); }

    kioscripting::Value List() const;
    std::vector<TR::IFilterModuleRef> GetModules() const;
    TR::IFilterModuleRef Load(const std::string& inMatchName) const;
    bool Unload(const std::string& inMatchName) const;
    boost::intrusive_ptr<VideoEffectObject> Open(const kioscripting::Value& inEffect,
                                                 const MF::IVideoFrameRef& inFrame,
                                                 const kioscripting::Value& inParameters) const;
    FrameObjectPtr Run(const kioscripting::Value& inEffect, const MF::IVideoFrameRef& inFrame,
                       const kioscripting::Value& inParameters) const;

private:
    ScriptHostPtr mHost;
};

} // namespace trhost::script
