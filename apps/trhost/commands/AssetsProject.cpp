// Making projects and setting the points of their clips.
#include "AssetList.h"
#include "Commands.h"

#include "../support/AbsolutePath.h"
#include "../support/CacheFileKinds.h"
#include "../support/Failure.h"

#include <BE/Project.h>
#include <TR/FileExtensions.h>
#include <ZOL/FolderSearch.h>
#include <ZOL/PathUtils.h>
#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>

#include <filesystem>
#include <map>
#include <set>
#include <strings.h>

namespace trhost {

namespace {

using BE::TickTime;
using kiocore::InterfaceRef;
using kiocore::filesupport::FromNative;
using kiocore::utility::ToUTF16;

/// A clip of the project as it was before.
struct ClipState {
    InterfaceRef<BE::IProjectItem> item;
    InterfaceRef<BE::IClipProjectItem> clip;
    UTF16String path;
    TickTime in;
    TickTime out;

    bool IsChanged() const { return clip->GetInPoint() != in || clip->GetOutPoint() != out; }
};

std::vector<ClipState> ListClips(const std::vector<InterfaceRef<BE::IProjectItem>>& inItems)
{
    std::vector<ClipState> clips;
    for (const auto& item : inItems) {
        if (const InterfaceRef<BE::IClipProjectItem> clip = item) {
            clips.push_back({item, clip, TR::GetAssetPath(item), clip->GetInPoint(), clip->GetOutPoint()});
        }
    }
    return clips;
}

void CheckPoints(const std::vector<TR::AssetSpecifier>& inSpecifiers)
{
    for (std::size_t i = 0; i < inSpecifiers.size(); ++i) {
        const TickTime in = inSpecifiers[i].GetInPoint();
        const TickTime out = inSpecifiers[i].GetOutPoint();
        if (!in.IsUnset() && !out.IsUnset() && out < in) {
            throw Failure(
                kExit_Failed,
                Text("$$$/Halcyon/TrHost/PointsInverted=standard input: $[@0]: OutPoint @1 of @2 lies "
                     "before InPoint @3; nothing was changed",
                     {kiocore::utility::DecimalText(i), ToUTF16(std::to_string(out.Ticks())),
                      inSpecifiers[i].GetPath(), ToUTF16(std::to_string(in.Ticks()))}));
        }
    }
}

UTF16String PointText(TickTime inPoint)
{
    return inPoint.IsUnset() ? Text("$$$/Halcyon/TrHost/PointUnset=unset#{an In or Out point}")
                             : ToUTF16(inPoint.AsUTF8());
}

void Report(Context& ioContext, const ClipState& inClip, bool inDryRun)
{
    const char* const action = !inClip.IsChanged() ? "unchanged" : inDryRun ? "wouldSet" : "set";
    const TickTime in = inClip.clip->GetInPoint();
    const TickTime out = inClip.clip->GetOutPoint();
    const UTF16String name = inClip.item->GetName();
    const char* const line = !inClip.IsChanged() ? "$$$/Halcyon/TrHost/PointsUnchanged=unchanged  @0  in @1  "
                                                   "out @2  @3#{@0: a clip, @1 and @2: points, @3: a file}"
                             : inDryRun ? "$$$/Halcyon/TrHost/PointsWouldBeSet=wouldSet  @0  in @1  out @2  "
                                          "@3#{@0: a clip, @1 and @2: points, @3: a file}"
                                        : "$$$/Halcyon/TrHost/PointsSet=set  @0  in @1  out @2  @3#{@0: a "
                                          "clip, @1 and @2: points, @3: a file}";
    ioContext.output.Result(Text(line, {name, PointText(in), PointText(out), inClip.path}),
                            JsonLine()
                                .Add("action", action)
                                .Add("item", inClip.item->GetID().AsUTF8())
                                .Add("name", name)
                                .Add("path", inClip.path)
                                .Add("inPoint", in.Ticks())
                                .Add("outPoint", out.Ticks()));
}

/// Fills bins with the media that are named.
class ProjectBuilder {
public:
    void Add(const std::string& inNativePath)
    {
        const UTF16String path = AbsolutePath(inNativePath);
        std::error_code error;
        const auto status = std::filesystem::status(inNativePath, error);
        if (std::filesystem::is_directory(status)) {
            AddFolder(path.ends_with(u'/') ? path : path + u'/');
        } else if (std::filesystem::is_regular_file(status)) {
            AddClip(*mProject->GetRootBin(), path);
        } else {
            throw Failure(
                kExit_Failed,
                Text("$$$/Halcyon/TrHost/NoMediaFile=@0: @1, expected a media file or a folder",
                     {path,
                      error ? kiocore::SystemErrorText(error.value())
                            : Text("$$$/Halcyon/TrHost/NeitherFileNorFolder=neither a file nor a folder")}));
        }
    }

    const InterfaceRef<BE::IProject>& GetProject() const { return mProject; }
    std::size_t ClipCount() const { return mClips; }

private:
    void AddFolder(const UTF16String& inFolder)
    {
        const ZOL::FileList files = ZOL::FolderSearch::FindFiles(inFolder, MediaExtensions());
        if (files.IsEmpty()) {
            throw Failure(kExit_Negative,
                          Text("$$$/Halcyon/TrHost/NoMediaBelow=there are no media files in @0", {inFolder}));
        }
        const UTF16String above = ZOL::PathUtils::GetDirectoryPart(inFolder.substr(0, inFolder.size() - 1));
        for (std::size_t i = 0; i < files.Size(); ++i) {
            const UTF16String path = files.GetPath(i);
            AddClip(*BinFor(ZOL::PathUtils::GetDirectoryPart(path), above), path);
        }
    }

    /// The bin of a folder, within those of the folders on the way from inAbove, each made when first needed.
    InterfaceRef<BE::IBinProjectItem> BinFor(const UTF16String& inFolder, const UTF16String& inAbove)
    {
        if (inFolder.size() <= inAbove.size()) {
            return mProject->GetRootBin();
        }
        InterfaceRef<BE::IBinProjectItem>& bin = mBins[inFolder];
        if (!bin) {
            const UTF16String folder = inFolder.substr(0, inFolder.size() - 1);
            const auto outer = BinFor(ZOL::PathUtils::GetDirectoryPart(folder), inAbove);
            bin = BE::CreateBinProjectItem(ZOL::PathUtils::GetFullFilePart(folder));
            outer->AddItem(bin);
        }
        return bin;
    }

    void AddClip(BE::IBinProjectItem& ioBin, const UTF16String& inPath)
    {
        if (!mSeen.insert(inPath).second) {
            return; // named, and in a folder that is named too
        }
        ioBin.AddItem(BE::CreateClipProjectItem(ZOL::PathUtils::GetFullFilePart(inPath),
                                                BE::CreateMasterClip({BE::CreateMedia(inPath)})));
        ++mClips;
    }

    const InterfaceRef<BE::IProject> mProject = BE::CreateProject();
    std::map<UTF16String, InterfaceRef<BE::IBinProjectItem>> mBins; // by folder
    std::set<UTF16String> mSeen;
    std::size_t mClips = 0;
};

} // namespace

int AssetsApply(Context& ioContext, const AssetsApplyOptions& inOptions)
{
    const auto specifiers = ReadSpecifiers();
    CheckPoints(specifiers);
    const auto project = BE::ReadProjectFile(FromNative(inOptions.project));
    const auto items = project->GetAllItems();
    const std::vector<ClipState> clips = ListClips(items);
    TR::UpdateProjectItemsWithInOutPoints(items, specifiers);

    bool changed = false;
    std::set<UTF16String> paths;
    for (const ClipState& clip : clips) {
        changed = changed || clip.IsChanged();
        paths.insert(clip.path);
    }
    if (!inOptions.dryRun && (changed || inOptions.output)) {
        BE::WriteProjectFile(project, FromNative(inOptions.output.value_or(inOptions.project)));
    }

    std::set<UTF16String> asked;
    bool allFound = true;
    for (const TR::AssetSpecifier& specifier : specifiers) {
        if (asked.insert(specifier.GetPath()).second && !paths.contains(specifier.GetPath())) {
            allFound = false;
            ioContext.output.Result(Text("$$$/Halcyon/TrHost/NoClip=no clip  @0", {specifier.GetPath()}),
                                    JsonLine().Add("action", "noClip").Add("path", specifier.GetPath()));
        }
    }
    for (const ClipState& clip : clips) {
        if (asked.contains(clip.path)) {
            Report(ioContext, clip, inOptions.dryRun);
        }
    }
    return allFound ? kExit_Done : kExit_Negative;
}

int AssetsNewProject(Context& ioContext, const NewProjectOptions& inOptions)
{
    const UTF16String file = AbsolutePath(inOptions.project);
    const std::string extension = kiocore::utility::ToUTF8(ZOL::PathUtils::GetExtension(file));
    const std::string expected = kiocore::utility::ToUTF8(TR::kExtensionProject);
    if (strcasecmp(extension.c_str(), expected.c_str()) != 0) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/NoProjectName=@0: expected a name that ends with @1",
                           {file, TR::kExtensionProject}));
    }
    std::error_code error;
    if (!inOptions.force &&
        std::filesystem::exists(std::filesystem::symlink_status(inOptions.project, error))) {
        throw Failure(
            kExit_Failed,
            Text("$$$/Halcyon/TrHost/ProjectThere=@0 is there already; --force replaces it", {file}));
    }
    ProjectBuilder builder;
    for (const std::string& media : inOptions.media) {
        builder.Add(media);
    }
    BE::WriteProjectFile(builder.GetProject(), file);
    ioContext.output.Note(Text("$$$/Halcyon/TrHost/ProjectMade=@0: @1 clips",
                               {file, kiocore::utility::DecimalText(builder.ClipCount())}),
                          JsonLine().Add("project", file).Add("clips", builder.ClipCount()));
    return kExit_Done;
}

} // namespace trhost
