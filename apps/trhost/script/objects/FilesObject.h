#pragma once

#include "ScriptHost.h"

#include <kioscripting/ScriptObject.h>
#include <kioscripting/Value.h>

namespace trhost::script {

/// Files below the folders that a script may use: class "Files", one object, `files`.
class FilesObject final : public kioscripting::ScriptObject {
public:
    const char* GetClassname() const override;
    void Initialize(ScriptHostPtr inHost) { mHost = std::move(inHost); }

    bool Exists(const kiocore::UTF16String& inPath) const;
    std::string Read(const kiocore::UTF16String& inPath) const;
    kioscripting::Value ReadBytes(const kiocore::UTF16String& inPath) const;
    void Write(const kiocore::UTF16String& inPath, const kioscripting::Value& inContents) const;
    void WriteBase64(const kiocore::UTF16String& inPath, const std::string& inText) const;
    std::vector<kiocore::UTF16String> List(const kiocore::UTF16String& inPath) const;
    void MakeFolder(const kiocore::UTF16String& inPath) const;

private:
    ScriptHostPtr mHost;
};

} // namespace trhost::script
