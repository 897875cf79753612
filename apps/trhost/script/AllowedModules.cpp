#include "AllowedModules.h"

#include "../support/Failure.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/filesupport/PlatformByteStream.h>

namespace trhost::script {
namespace {

namespace fs = std::filesystem;
using kiocore::filesupport::FromNative;
using kiocore::utility::ToUTF16;

constexpr std::uint64_t kMostBytes = std::uint64_t{256} << 20;

std::string ReadSource(const std::string& inPath)
{
    kiocore::filesupport::IPlatformByteStream stream(FromNative(inPath));
    const std::uint64_t size = stream.Size();
    if (size > kMostBytes) {
        throw kiocore::kio_exception(
            Text("$$$/Halcyon/TrHost/ScriptModuleTooLarge=@0 is too large for a script",
                 {FromNative(inPath)}),
            kiocore::kError_BadArgument);
    }
    std::string text(size, '\0');
    text.resize(stream.ReadBlock(text.data(), text.size()));
    return text;
}

} // namespace

kioscripting::ModuleSource FindModule(const AllowedFolders& inFolders, const std::string& inName,
                                      const std::string& inFromFile)
{
    if (!inName.starts_with("./") && !inName.starts_with("../") && !inName.starts_with('/')) {
        throw kiocore::kio_exception(Text("$$$/Halcyon/TrHost/ScriptModuleName=there is no module @0; a "
                                          "script's own begin with ./ or ../",
                                          {ToUTF16(inName)}),
                                     kiocore::kError_BadArgument);
    }
    const fs::path asked = fs::path(inFromFile).parent_path() / inName;
    for (const char* const ending : {"", ".js", ".json", "/index.js"}) {
        const fs::path candidate = asked.native() + ending;
        std::error_code error;
        if (fs::is_regular_file(candidate, error)) {
            const std::string path = inFolders.ToRead(FromNative(candidate.native()));
            return {path, ReadSource(path)};
        }
    }
    throw kiocore::kio_exception(
        Text("$$$/Halcyon/TrHost/ScriptNoModule=there is no module @0, looked for from @1",
             {ToUTF16(inName), FromNative(inFromFile)}),
        kiocore::kError_BadArgument);
}

} // namespace trhost::script
