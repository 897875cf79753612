#pragma once

#include "ScriptHost.h"

#include <kioscripting/Engine.h>
#include <kioscripting/ScriptObject.h>

namespace trhost::script {

/// The program that runs a script: class "Host", one object, `host`.
class HostObject final : public kioscripting::ScriptObject {
public:
    const char* GetClassname() const override;
    void Initialize(ScriptHostPtr inHost) { mHost = std::move(inHost); }

    std::vector<std::string> GetArguments() const { return mHost->arguments; }
    std::string GetVersion() const;
    int GetExitStatus() const { return mHost->exitStatus; }
    void SetExitStatus(std::uint8_t inStatus) const { mHost->exitStatus = inStatus; }

private:
    ScriptHostPtr mHost;
};

/// Gives an engine the globals `host`, `media`, `effects` and `files`.
void SetGlobals(kioscripting::IScriptEngine& ioEngine, const ScriptHostPtr& inHost);

} // namespace trhost::script
