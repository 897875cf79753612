// Lists of assets on standard input and output.
#include "AssetList.h"
#include "Commands.h"

#include "../support/Failure.h"
#include "../support/StandardInput.h"

#include <BE/Project.h>
#include <kiocore/filesupport/NativePath.h>

#include <algorithm>
#include <strings.h>

namespace trhost {

namespace {

using namespace kiocore::serialization;
using kiocore::utility::ToUTF16;

constexpr std::size_t kMaxInputBytes = 64u << 20;

/// Reads standard input as JSON and hands it on; what is wrong with it becomes a Failure with its place.
template <typename Read>
auto FromStandardInput(const Read& inRead)
{
    const auto fail = [](const std::exception& inProblem) {
        return Failure(kExit_Failed,
                       Text("$$$/Halcyon/TrHost/BadInput=standard input: @0", {ToUTF16(inProblem.what())}));
    };
    const std::string text = ReadStandardInput(kMaxInputBytes);
    try {
        return inRead(GetJSONFromUTF8String(text));
    } catch (const not_well_formed_exception& problem) {
        throw fail(problem);
    } catch (const bad_cast_exception& problem) {
        throw fail(problem);
    }
}

void CheckSpecifier(const JSON& inElement)
{
    const JSONObject& object = AsObject(inElement);
    for (const auto& [name, value] : object) {
        for (const char* known : {"Path", "InPoint", "OutPoint"}) {
            if (name != known && strcasecmp(name.c_str(), known) == 0) {
                throw bad_cast_exception("a member named " + name, std::string(known));
            }
        }
    }
    if (GetMember<std::string>(object, "Path").empty()) {
        bad_cast_exception problem("an empty text", "the path of a media file");
        problem.IsWithinMember("Path");
        throw problem;
    }
}

} // namespace

std::vector<TR::AssetSpecifier> ReadSpecifiers()
{
    return FromStandardInput([](const JSON& inDocument) {
        const JSONArray& array = AsArray(inDocument);
        for (std::size_t i = 0; i < array.size(); ++i) {
            try {
                CheckSpecifier(array[i]);
            } catch (bad_cast_exception& problem) {
                problem.IsWithinElement(i);
                throw;
            }
        }
        return JSONConvert<std::vector<TR::AssetSpecifier>>::FromJSON(inDocument);
    });
}

int AssetsToPaths(Context& ioContext)
{
    PrintList(ioContext.output, TR::ConvertToPathVector(ReadSpecifiers()));
    return kExit_Done;
}

int AssetsFromPaths(Context& ioContext)
{
    const auto paths = FromStandardInput(&JSONConvert<std::vector<UTF16String>>::FromJSON);
    PrintList(ioContext.output, TR::ConvertFromPathVector(paths));
    return kExit_Done;
}

int AssetsFromProject(Context& ioContext, const std::string& inProject)
{
    std::vector<TR::AssetSpecifier> specifiers;
    const auto project = BE::ReadProjectFile(kiocore::filesupport::FromNative(inProject));
    for (const auto& item : project->GetAllItems()) {
        const kiocore::InterfaceRef<BE::IClipProjectItem> clip = item;
        const UTF16String path = TR::GetAssetPath(item);
        if (clip && !path.empty()) {
            specifiers.emplace_back(path, clip->GetInPoint(), clip->GetOutPoint());
        }
    }
    PrintList(ioContext.output, specifiers);
    return kExit_Done;
}

} // namespace trhost
