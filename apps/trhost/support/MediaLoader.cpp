#include "MediaLoader.h"

#include "Failure.h"

#include <kiocore/platform/Modules.h>

namespace trhost {

std::string MediaModulePath()
{
    const std::string program = kiocore::platform::ProgramPath();
    return program.substr(0, program.find_last_of('/')) + "/" TRHOST_MODULE_FOLDER "/" +
           media::kMediaModuleFileName;
}

media::IMediaModule& LoadMediaModule()
{
    // A failed load throws out of the initialiser, so the next caller tries again.
    static media::IMediaModule& sModule = []() -> media::IMediaModule& {
        const std::string path = MediaModulePath();
        const auto function = reinterpret_cast<media::MediaModuleFunction>(
            kiocore::platform::LoadModuleFunction(path, media::kMediaModuleFunctionName));
        media::IMediaModule* const module = function(media::kMediaModuleVersion);
        if (!module) {
            throw Failure(kExit_Failed,
                          Text("$$$/Halcyon/TrHost/WrongModule=@0 was built for another version of "
                               "trhost; install both from one build",
                               {kiocore::utility::ToUTF16(path)}));
        }
        return *module;
    }();
    return sModule;
}

} // namespace trhost
